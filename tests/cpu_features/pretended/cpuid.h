#pragma once

/** The leaves of the pretended processor; what the compiler's header of this name offers reads them. */
struct PretendedProcessor {
  unsigned features_ecx = 0;  ///< leaf 1
  unsigned features_edx = 0;
  unsigned extended_ebx = 0;  ///< leaf 7
};

extern PretendedProcessor pretended_processor;

// NOLINTBEGIN(readability-identifier-naming): the compiler's names
inline int __get_cpuid_count(unsigned leaf, unsigned /*subleaf*/, unsigned* /*eax*/, unsigned* ebx, unsigned* ecx,
                             unsigned* edx) {
  *ebx = leaf == 7 ? pretended_processor.extended_ebx : 0;
  *ecx = leaf == 1 ? pretended_processor.features_ecx : 0;
  *edx = leaf == 1 ? pretended_processor.features_edx : 0;
  return 1;
}

inline void __cpuid(unsigned leaf, unsigned& eax, unsigned& ebx, unsigned& ecx, unsigned& edx) {
  __get_cpuid_count(leaf, 0, &eax, &ebx, &ecx, &edx);
}
// NOLINTEND(readability-identifier-naming)
