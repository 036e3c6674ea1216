#include "failure_text.h"

#include <new>

#include "codec_error.h"
#include "failure.h"

namespace nerova_zel {

namespace {

/** What this program's options have to do with a fact. */
struct Advice {
  Fact fact;
  /** Words of the fact's sentence, and those in their place. */
  const char* words;
  const char* option;
  /** What follows the sentence. */
  const char* remedy;
};

constexpr Advice advices[] = {
    {Fact::library_not_loaded, "", "", "say where it is with --library PATH"},
    {Fact::file_length, "", "", "say --pixel-format for many frames in a file or packed pixels"},
    {Fact::bit_depth_too_great, "the bit depth ", "--bit-depth ", ""},
    {Fact::bit_depth_unknown, "", "", "say it with --bit-depth"},
    {Fact::value_too_great, "", "", "say its bit depth with --bit-depth"},
    {Fact::overflow, "", "", "--bit-depth or --pixel-format is wrong, or --allow-overflow takes them as they are"},
    {Fact::no_headroom, "power with headroom", "--power-headroom", "s0 of --outputs is not clipped"},
    {Fact::other_bit_depth, "", "", "use frames of that bit depth, or say it with --bit-depth"},
    {Fact::region_beyond_frame, "the region ", "the region of --roi ", ""},
    {Fact::colour_calibration, "", "", "say the sensor's pattern with --colour"},
    {Fact::grey_calibration, "", "", "make one of the colours with calibrate --colour"},
    {Fact::wrong_orientation, "", "",
     "--layout or --origin is wrong, or the angles of the frames do not count counter-clockwise from the image's "
     "horizontal axis"}};

/** What to do about a file: the first row whose reason and words fit. */
struct FileAdvice {
  CodecError::Reason reason;
  const char* words;
  const char* remedy;
};

constexpr FileAdvice file_advices[] = {
    {CodecError::Reason::empty, "is empty", "a PNG, TIFF, PGM or NPY file is needed"},
    {CodecError::Reason::unknown_format, "", "for headerless pixels, say their size with --raw WxH"},
    {CodecError::Reason::unsupported, "channels", "a raw mosaic frame has a single grey one"},
    {CodecError::Reason::unsupported, "floating-point", "a raw mosaic frame has unsigned 8- or 16-bit ones"},
    {CodecError::Reason::damaged, "PGM header",
     "it should read P5, width, height and a greatest value of at most 65535"}};

std::string with_advice(const Failure& failure) {
  std::string sentence = failure.what();
  for (const Advice& advice : advices) {
    if (advice.fact != failure.fact()) {
      continue;
    }
    const std::string words = advice.words;
    if (const std::size_t at = sentence.rfind(words); !words.empty() && at != std::string::npos) {
      sentence.replace(at, words.size(), advice.option);
    }
    if (*advice.remedy != '\0') {
      sentence.pop_back();
      sentence += std::string("; ") + advice.remedy + ".";
    }
  }
  return sentence;
}

std::string with_advice(const CodecError& error) {
  const std::string sentence = error.what();
  for (const FileAdvice& advice : file_advices) {
    if (advice.reason == error.reason() && sentence.find(advice.words) != std::string::npos) {
      return sentence + "; " + advice.remedy + ".";
    }
  }
  return sentence + ".";
}

}  // namespace

std::string describe_current_failure() {
  try {
    throw;
  } catch (const Failure& failure) {
    return with_advice(failure);
  } catch (const CodecError& error) {
    return with_advice(error);
  } catch (const std::bad_alloc&) {
    return "memory ran out; a smaller frame, fewer --outputs or fewer --jobs need less.";
  } catch (const std::exception& error) {
    return std::string("unexpected failure: ") + error.what() + ".";
  }
}

}  // namespace nerova_zel
