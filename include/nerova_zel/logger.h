/**
 * @file logger.h
 * @brief Entry points of the logger library, which others load at run time and look up by name.
 *
 * Self-contained C99; C calling convention. All entries may be called from any thread and raise nothing. Strings are
 * zero-terminated, never NULL and not kept by the library beyond the call.
 *
 * The configuration file holds lines `key = value`; `#` starts a comment.
 *  - file: where records go, appended; relative to the working directory. Default nerova_zel.log.
 *  - level: the highest level that is written. Default 2, errors only; 7 adds timing records.
 *
 * The log file is opened when the first record is written; one line per record:
 * time (UTC), level, module, source file and line, function, message, separated by tabs.
 */
#ifndef NEROVA_ZEL_LOGGER_H
#define NEROVA_ZEL_LOGGER_H

#include <stdint.h> /* NOLINT(modernize-deprecated-headers): C callers have no <cstdint> */

#if defined(NEROVA_ZEL_LOGGER_BUILDING) && defined(_WIN32)
#define NEROVA_ZEL_LOGGER_API __declspec(dllexport)
#elif defined(NEROVA_ZEL_LOGGER_BUILDING)
#define NEROVA_ZEL_LOGGER_API __attribute__((visibility("default")))
#else
#define NEROVA_ZEL_LOGGER_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The log of (module_name, second_name), made on the first call for that pair; each call needs a matching zel_free_log.
 *
 * @param configuration_file_name read when the log is made, relative to the working directory; a missing file or key
 *        means the defaults.
 * @return the log, owned by the library; NULL when memory runs out.
 */
NEROVA_ZEL_LOGGER_API void* zel_get_log(const char* module_name, const char* second_name,
                                        const char* configuration_file_name);

/**
 * Writes one record.
 *
 * @param log from zel_get_log and not yet freed; NULL is refused.
 * @param level the lower, the more severe; 2 is an error.
 * @param message one line; line breaks in it become blanks.
 * @return 0 when the record was written; 1 when its level is not wanted or it cannot be written.
 */
NEROVA_ZEL_LOGGER_API int32_t zel_log(void* log, int32_t level, const char* source_file, int32_t source_line,
                                      const char* function_name, const char* message);

/** Takes back one zel_get_log; the last one for a pair of names closes the log. An unknown pair does nothing. */
NEROVA_ZEL_LOGGER_API void zel_free_log(const char* module_name, const char* second_name);

#ifdef __cplusplus
}
#endif

#endif
