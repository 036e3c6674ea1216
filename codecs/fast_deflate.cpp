#include "fast_deflate.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace nerova_zel {

namespace {

constexpr int end_of_block = 256;
// Matches at distance 1, of the two lengths that need no further bits.
constexpr int match_10 = 264;
constexpr int match_258 = 285;
constexpr int symbols = 286;
// Four codes and seven bits left over fit into 64.
constexpr int longest_code = 12;
constexpr int longest_length_code = 7;
constexpr std::size_t shortest_run = 24;

struct Code {
  std::uint16_t bits = 0;  ///< the first bit lowest
  std::uint8_t length = 0;
};

/** Lengths of a Huffman code for `count` symbols, none above `longest`; 0 for what does not occur. */
template <std::size_t count>
std::array<std::uint8_t, count> code_lengths(std::array<std::uint32_t, count> frequencies, int longest) {
  std::array<std::uint8_t, count> lengths{};
  std::array<std::uint16_t, count> leaves{};
  std::size_t used = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (frequencies[i] > 0) {
      leaves[used++] = static_cast<std::uint16_t>(i);
    }
  }
  if (used == 1) {
    lengths[leaves[0]] = 1;
    return lengths;
  }
  for (;;) {
    std::sort(leaves.begin(), leaves.begin() + static_cast<std::ptrdiff_t>(used), [&](auto a, auto b) {
      return frequencies[a] != frequencies[b] ? frequencies[a] < frequencies[b] : a < b;
    });
    // Nodes 0 to used - 1 are the leaves, the others arise in the order of their weights: two queues.
    std::array<std::uint32_t, 2 * count> weights{};
    std::array<std::uint16_t, 2 * count> parents{};
    for (std::size_t i = 0; i < used; ++i) {
      weights[i] = frequencies[leaves[i]];
    }
    std::size_t leaf = 0;
    std::size_t inner = used;
    const std::size_t nodes = 2 * used - 1;
    for (std::size_t node = used; node < nodes; ++node) {
      for (int child = 0; child < 2; ++child) {
        const bool take_leaf = leaf < used && (inner >= node || weights[leaf] <= weights[inner]);
        const std::size_t taken = take_leaf ? leaf++ : inner++;
        weights[node] += weights[taken];
        parents[taken] = static_cast<std::uint16_t>(node);
      }
    }
    std::array<std::uint8_t, 2 * count> depths{};
    int deepest = 0;
    for (std::size_t node = nodes - 1; node-- > 0;) {
      depths[node] = static_cast<std::uint8_t>(depths[parents[node]] + 1);
      deepest = std::max<int>(deepest, depths[node]);
    }
    if (deepest <= longest) {
      for (std::size_t i = 0; i < used; ++i) {
        lengths[leaves[i]] = depths[i];
      }
      return lengths;
    }
    // Nearer to one another, in the end all alike, which gives 9 bits at most.
    for (std::uint32_t& frequency : frequencies) {
      frequency = (frequency + 1) / 2;
    }
  }
}

/** The codes that inflaters derive from the lengths. */
template <std::size_t count>
std::array<Code, count> codes_of(const std::array<std::uint8_t, count>& lengths) {
  std::array<Code, count> codes{};
  unsigned next = 0;
  for (unsigned length = 1; length <= 15; ++length) {
    next <<= 1U;
    for (std::size_t i = 0; i < count; ++i) {
      if (lengths[i] == length) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < length; ++bit) {
          reversed |= (next >> bit & 1U) << (length - 1 - bit);
        }
        codes[i] = {static_cast<std::uint16_t>(reversed), static_cast<std::uint8_t>(length)};
        ++next;
      }
    }
  }
  return codes;
}

std::uint64_t load_8(const unsigned char* at) {
  std::uint64_t value = 0;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

void store_8(unsigned char* at, std::uint64_t value) {
  for (unsigned i = 0; i < 8; ++i) {
    at[i] = static_cast<unsigned char>(value >> 8 * i);  // one instruction where the low byte is first
  }
}

/** Calls literals(first, end) and zeros(count) for the parts of the data in turn. */
template <class Literals, class Zeros>
void split(const unsigned char* data, std::size_t size, const Literals& literals, const Zeros& zeros) {
  const unsigned char* const end = data + size;
  const unsigned char* first = data;
  const unsigned char* at = data;
  while (end - at >= 8) {
    if (load_8(at) != 0) {
      at += 8;
      continue;
    }
    const unsigned char* run_end = at + 8;
    while (end - run_end >= 8 && load_8(run_end) == 0) {
      run_end += 8;
    }
    if (static_cast<std::size_t>(run_end - at) >= shortest_run) {
      literals(first, at);
      zeros(static_cast<std::size_t>(run_end - at));
      first = run_end;
    }
    at = run_end;
  }
  literals(first, end);
}

/** A run of zeros: one literal, matches at distance 1, and literals again for what is left. */
struct Run {
  explicit Run(std::size_t zeros)
      : matches_258((zeros - 1) / 258), matches_10((zeros - 1) % 258 / 10), literals(1 + (zeros - 1) % 258 % 10) {}
  std::size_t matches_258;
  std::size_t matches_10;
  std::size_t literals;
};

std::array<std::uint32_t, symbols> count_symbols(const unsigned char* data, std::size_t size) {
  // Four tables, because adding to the same one twice in a row has to wait for the first sum.
  std::array<std::array<std::uint32_t, 256>, 4> counts{};
  std::array<std::uint32_t, symbols> frequencies{};
  split(
      data, size,
      [&](const unsigned char* at, const unsigned char* end) {
        for (; end - at >= 4; at += 4) {
          ++counts[0][at[0]];
          ++counts[1][at[1]];
          ++counts[2][at[2]];
          ++counts[3][at[3]];
        }
        for (; at < end; ++at) {
          ++counts[0][*at];
        }
      },
      [&](std::size_t zeros) {
        const Run run(zeros);
        frequencies[0] += static_cast<std::uint32_t>(run.literals);
        frequencies[match_10] += static_cast<std::uint32_t>(run.matches_10);
        frequencies[match_258] += static_cast<std::uint32_t>(run.matches_258);
      });
  for (std::size_t i = 0; i < 256; ++i) {
    frequencies[i] += counts[0][i] + counts[1][i] + counts[2][i] + counts[3][i];
  }
  frequencies[end_of_block] = 1;
  return frequencies;
}

}  // namespace

FastDeflate::FastDeflate(Bytes& out) : out_(out) {
  out_.push_back(0x78);  // deflate, 32 KiB
  out_.push_back(0x01);  // the fastest level
}

void FastDeflate::put(std::uint64_t bits, unsigned count) {
  pending_ |= bits << pending_count_;
  pending_count_ += count;
  for (; pending_count_ >= 8; pending_count_ -= 8) {
    out_.push_back(static_cast<unsigned char>(pending_ & 0xFFU));
    pending_ >>= 8U;
  }
}

void FastDeflate::align() { put(0, (8 - pending_count_) % 8); }

void FastDeflate::add_stored(const unsigned char* data, std::size_t size) {
  while (size > 0) {
    const std::size_t part = std::min<std::size_t>(size, 65535);
    put(0, 3);  // not the last, stored
    align();
    put(part, 16);
    put(part ^ 0xFFFFU, 16);
    out_.insert(out_.end(), data, data + part);
    data += part;
    size -= part;
  }
}

void FastDeflate::add(const unsigned char* data, std::size_t size) {
  if (size == 0) {
    return;
  }
  checksum_ = adler32_z(checksum_, data, size);
  const auto frequencies = count_symbols(data, size);
  const auto lengths = code_lengths(frequencies, longest_code);
  std::array<std::uint32_t, 19> length_frequencies{};
  for (const std::uint8_t length : lengths) {
    ++length_frequencies[length];
  }
  ++length_frequencies[1];  // of the only distance code
  const auto length_lengths = code_lengths(length_frequencies, longest_length_code);
  std::uint64_t body_bits = frequencies[match_10] + frequencies[match_258];  // their distances
  for (std::size_t i = 0; i < symbols; ++i) {
    body_bits += std::uint64_t{frequencies[i]} * lengths[i];
  }
  std::uint64_t head_bits = 3 + 5 + 5 + 4 + 19 * 3;
  for (std::size_t i = 0; i < length_frequencies.size(); ++i) {
    head_bits += std::uint64_t{length_frequencies[i]} * length_lengths[i];
  }
  if ((head_bits + body_bits) / 8 >= size) {
    return add_stored(data, size);
  }

  const auto length_codes = codes_of(length_lengths);
  put(0, 1);  // not the last block
  put(2, 2);  // with a code of its own
  put(symbols - 257, 5);
  put(0, 5);       // one distance
  put(19 - 4, 4);  // all lengths of codes, in this order
  for (const unsigned i : {16U, 17U, 18U, 0U, 8U, 7U, 9U, 6U, 10U, 5U, 11U, 4U, 12U, 3U, 13U, 2U, 14U, 1U, 15U}) {
    put(length_lengths[i], 3);
  }
  for (const std::uint8_t length : lengths) {
    put(length_codes[length].bits, length_codes[length].length);
  }
  put(length_codes[1].bits, length_codes[1].length);

  const auto codes = codes_of(lengths);
  const std::size_t start = out_.size();
  out_.resize(start + static_cast<std::size_t>(body_bits / 8) + 16);
  unsigned char* out = out_.data() + start;
  std::uint64_t pending = pending_;
  unsigned count = pending_count_;
  const auto append = [&](const Code& code) {
    pending |= std::uint64_t{code.bits} << count;
    count += code.length;
  };
  const auto flush = [&] {
    store_8(out, pending);
    out += count / 8;
    pending >>= count & ~7U;
    count &= 7U;
  };
  split(
      data, size,
      [&](const unsigned char* at, const unsigned char* end) {
        for (; end - at >= 4; at += 4) {
          append(codes[at[0]]);
          append(codes[at[1]]);
          append(codes[at[2]]);
          append(codes[at[3]]);
          flush();
        }
        for (; at < end; ++at) {
          append(codes[*at]);
          flush();
        }
      },
      [&](std::size_t zeros) {
        const Run run(zeros);
        const auto match = [&](int symbol) {
          append(codes[static_cast<std::size_t>(symbol)]);
          append({0, 1});  // distance 1
          flush();
        };
        const auto literal = [&] {
          append(codes[0]);
          flush();
        };
        literal();
        for (std::size_t i = 0; i < run.matches_258; ++i) {
          match(match_258);
        }
        for (std::size_t i = 0; i < run.matches_10; ++i) {
          match(match_10);
        }
        for (std::size_t i = 1; i < run.literals; ++i) {
          literal();
        }
      });
  append(codes[end_of_block]);
  flush();
  out_.resize(static_cast<std::size_t>(out - out_.data()));
  pending_ = pending;
  pending_count_ = count;
}

void FastDeflate::finish() {
  put(1, 1);  // a last block, empty, with the fixed codes
  put(1, 2);
  put(0, 7);
  align();
  for (const unsigned shift : {24U, 16U, 8U, 0U}) {
    put(checksum_ >> shift & 0xFFU, 8);
  }
}

}  // namespace nerova_zel
