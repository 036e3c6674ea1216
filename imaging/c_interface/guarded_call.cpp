#include "c_interface/guarded_call.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "failure.h"
#include "nerova_zel/polarization_processor.hpp"

namespace nerova_zel {

namespace {

/** Of each thread; an array, because neither making nor keeping it can fail. */
thread_local char last_error[512] = "";

std::int32_t remember(std::int32_t code, const char* sentence) noexcept {
  std::snprintf(last_error, sizeof(last_error), "%s", sentence);
  const std::size_t length = std::strlen(last_error);
  if (length > 0 && last_error[length - 1] == '.') {
    last_error[length - 1] = '\0';
  }
  return code;
}

}  // namespace

std::int32_t code_of_current_exception() noexcept {
  try {
    throw;
  } catch (const ProcessorError& error) {
    return remember(error.code(), error_text(error.code()));
  } catch (const ArgumentError& error) {
    return remember(NV_IMAGING_ERROR_ARGUMENT, error.what());
  } catch (const Failure& failure) {
    return remember(NV_IMAGING_ERROR_DATA, failure.what());
  } catch (const std::bad_alloc&) {
    return remember(NV_IMAGING_ERROR_OUT_OF_MEMORY, "memory ran out");
  } catch (const std::length_error&) {
    return remember(NV_IMAGING_ERROR_OUT_OF_MEMORY, "more memory was asked for than there can be");
  } catch (const std::exception& error) {
    return remember(NV_IMAGING_ERROR_UNKNOWN, error.what());
  } catch (...) {
    return remember(NV_IMAGING_ERROR_UNKNOWN, "the reason is unknown");
  }
}

}  // namespace nerova_zel

const char* nv_imaging_error_text(void) { return nerova_zel::last_error; }
