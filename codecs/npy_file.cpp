#include "npy_file.h"

#include <cctype>
#include <cstring>
#include <limits>

#include "codec_error.h"
#include "message_text.h"
#include "samples.h"

namespace nerova_zel {

namespace {

constexpr std::size_t magic_length = 6;

[[noreturn]] void fail(const std::string& name, const std::string& what) {
  throw CodecError(CodecError::Reason::damaged, name + " is damaged or cut short: " + what);
}

/** The description in the header: a Python dictionary of three known keys. */
class Description {
 public:
  Description(const std::string& text, const std::string& name) : text_(text), name_(name) {}

  void parse(NpyArray& array) {
    expect('{');
    bool found[3] = {};
    while (!accept('}')) {
      const std::string key = string();
      expect(':');
      if (key == "descr") {
        type_ = string();
        found[0] = true;
      } else if (key == "fortran_order") {
        fortran_ = word() == "True";
        found[1] = true;
      } else if (key == "shape") {
        array.shape = tuple();
        found[2] = true;
      } else {
        broken();
      }
      if (!accept(',')) {
        expect('}');
        break;
      }
    }
    if (!found[0] || !found[1] || !found[2]) {
      broken();
    }
    check_type(array);
  }

 private:
  [[noreturn]] void broken() const { fail(name_, "its header is broken"); }

  void check_type(NpyArray& array) const {
    const std::string kind = type_.size() == 3 ? type_.substr(1) : "";
    if (kind == "u1") {
      array.element = Element::uint8;
    } else if (kind == "u2") {
      array.element = Element::uint16;
    } else if (kind == "f4") {
      array.element = Element::float32;
    } else {
      throw CodecError(CodecError::Reason::unsupported,
                       name_ + " holds elements of the type " + message_text(type_) + "; u1, u2 and f4 are read");
    }
    array.high_byte_first = type_[0] == '>';
    if (type_[0] != '<' && type_[0] != '>' && type_[0] != '|' && type_[0] != '=') {
      broken();
    }
    if (fortran_ && array.shape.size() > 1) {
      throw CodecError(CodecError::Reason::unsupported, name_ + " holds an array in Fortran order; C order is read");
    }
  }

  void skip_blanks() {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])) != 0) {
      ++at_;
    }
  }

  bool accept(char wanted) {
    skip_blanks();
    if (at_ < text_.size() && text_[at_] == wanted) {
      ++at_;
      return true;
    }
    return false;
  }

  void expect(char wanted) {
    if (!accept(wanted)) {
      broken();
    }
  }

  std::string string() {
    skip_blanks();
    const char quote = accept('"') ? '"' : '\'';
    if (quote == '\'') {
      expect('\'');
    }
    const std::size_t end = text_.find(quote, at_);
    if (end == std::string::npos) {
      broken();
    }
    std::string value = text_.substr(at_, end - at_);
    at_ = end + 1;
    return value;
  }

  std::string word() {
    skip_blanks();
    const std::size_t start = at_;
    while (at_ < text_.size() && std::isalpha(static_cast<unsigned char>(text_[at_])) != 0) {
      ++at_;
    }
    std::string value = text_.substr(start, at_ - start);
    if (value != "True" && value != "False") {
      broken();
    }
    return value;
  }

  std::vector<std::size_t> tuple() {
    std::vector<std::size_t> values;
    expect('(');
    while (!accept(')')) {
      skip_blanks();
      std::size_t value = 0;
      const std::size_t start = at_;
      for (; at_ < text_.size() && std::isdigit(static_cast<unsigned char>(text_[at_])) != 0; ++at_) {
        const auto digit = static_cast<std::size_t>(text_[at_] - '0');
        if (value > (std::numeric_limits<std::size_t>::max() - digit) / 10) {
          broken();
        }
        value = 10 * value + digit;
      }
      if (at_ == start || values.size() == 32) {
        broken();
      }
      values.push_back(value);
      if (!accept(',')) {
        expect(')');
        break;
      }
    }
    return values;
  }

  const std::string& text_;
  const std::string& name_;
  std::size_t at_ = 0;
  std::string type_;
  bool fortran_ = false;
};

}  // namespace

bool is_npy(const Bytes& bytes) {
  return bytes.size() >= magic_length && std::memcmp(bytes.data(), "\x93NUMPY", magic_length) == 0;
}

std::string npy_header(Element element, const std::vector<std::size_t>& shape) {
  constexpr std::size_t prefix_length = 10;
  constexpr std::size_t alignment = 64;  // of the first element
  const char* const type = element == Element::uint8 ? "|u1" : element == Element::uint16 ? "<u2" : "<f4";
  std::string description = std::string("{'descr': '") + type + "', 'fortran_order': False, 'shape': (";
  for (std::size_t i = 0; i < shape.size(); ++i) {
    description += (i == 0 ? "" : ", ") + std::to_string(shape[i]);
  }
  description += shape.size() == 1 ? ",), }" : "), }";
  const std::size_t unpadded = prefix_length + description.size() + 1;
  description.append((alignment - unpadded % alignment) % alignment, ' ');
  description += '\n';
  std::string header("\x93NUMPY\x01\x00", 8);
  header += static_cast<char>(description.size() & 0xFFU);
  header += static_cast<char>(description.size() >> 8U);
  return header + description;
}

NpyArray parse_npy(const Bytes& bytes, std::uint64_t size, const std::string& name) {
  constexpr std::size_t version_length = 2;
  std::size_t at = magic_length + version_length;
  if (!is_npy(bytes) || bytes.size() < at) {
    fail(name, "it does not begin as a .npy file");
  }
  const unsigned version = bytes[magic_length];
  if (version < 1 || version > 3) {
    throw CodecError(CodecError::Reason::unsupported,
                     name + " has version " + std::to_string(version) + " of the .npy format; 1 to 3 are read");
  }
  const std::size_t length_bytes = version == 1 ? 2 : 4;
  std::uint64_t length = 0;
  for (std::size_t i = 0; i < length_bytes && at + i < bytes.size(); ++i) {
    length |= std::uint64_t{bytes[at + i]} << 8 * i;
  }
  at += length_bytes;
  if (at > bytes.size() || length > bytes.size() - at) {
    fail(name, "its header is cut short");
  }
  NpyArray array;
  const std::string text(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         bytes.begin() + static_cast<std::ptrdiff_t>(at + length));
  Description(text, name).parse(array);
  array.at = at + static_cast<std::size_t>(length);
  const std::uint64_t present = (size - array.at) / size_of(array.element);
  for (const std::size_t extent : array.shape) {
    if (extent != 0 && array.count > std::numeric_limits<std::size_t>::max() / extent) {
      fail(name, "its array is larger than any memory");
    }
    array.count *= extent;
  }
  if (array.count > present) {
    fail(name, std::to_string(array.count) + " elements are announced, and " + std::to_string(present) + " are there");
  }
  return array;
}

std::vector<float> npy_floats(const Bytes& bytes, const NpyArray& array) {
  std::vector<float> values(array.count);
  for (std::size_t i = 0; i < array.count; ++i) {
    std::uint32_t bits = 0;
    for (std::size_t byte = 0; byte < 4; ++byte) {
      bits |= std::uint32_t{bytes[array.at + 4 * i + byte]} << 8 * (array.high_byte_first ? 3 - byte : byte);
    }
    std::memcpy(&values[i], &bits, sizeof(bits));
  }
  return values;
}

void npy_pixels(const unsigned char* elements, const NpyArray& array, std::size_t count, std::uint16_t* pixels) {
  if (array.element == Element::uint16) {
    join_bytes(elements, count, array.high_byte_first, pixels);
  } else {
    widen(elements, count, pixels);
  }
}

}  // namespace nerova_zel
