#pragma once

// Small functions of the per-pixel code: a call between them would cost more than their work, and a copy that is kept
// out of line could be shared between instruction sets.
#define NEROVA_INLINE inline __attribute__((always_inline))
