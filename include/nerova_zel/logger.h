/**
 * @file logger.h
 * @brief Entry points of the logger library, which others load at run time and look up by name.
 *
 * Self-contained C99; C calling convention. All entries may be called from any thread and raise nothing; a thread must
 * not be cancelled (pthread_cancel) in one. Strings are zero-terminated, never NULL and not kept by the library beyond
 * the call.
 *
 * The configuration file holds lines `key = value`. A # at the start of a line or after a blank starts a comment. Of a
 * key that is given twice the last one holds. A faulty line is ignored and reported by a record of level 2, whatever
 * the level; a missing file or key means the default.
 *  - file: where records go, appended; UTF-8, relative to the working directory in which the first record is written.
 *    A regular file or a character device. Default nerova_zel.log.
 *  - level: the highest level that is written, from 0. Default 2, errors only; 7 adds timing records.
 *  - max_size: bytes, or K, M, G of them, that the file is kept below by rotation: it becomes FILE.1, FILE.1 becomes
 *    FILE.2 and so on. 0: no rotation. Default 10M. A single record that is larger has a file to itself.
 *  - kept_files: how many rotated files there are at most, 0 to 999. Default 3.
 *  - pattern: of a line; text, "\t" for a tab, and the flags below. Default
 *    %Y-%m-%dT%H:%M:%S.%eZ\t%l\t%n\t%g:%#\t%!\t%v
 *  - flush: "record": each record is handed to the operating system before zel_log returns, so that it survives the
 *    program's crash. "disk": and forced to the disk. "buffer": records wait in memory, until there are 64 KiB or
 *    max_size of them, or one of level 2 or less comes, or the next one comes a second after the first, or the log is
 *    freed, or the program exits normally. Default record.
 *
 * Flags: %l level, %n module name (and "/" and the second name, if that is not empty), %g source file as given, %s its
 * last part, %# source line, %! function, %v message, %t thread, %P process, %% a percent sign; times, in UTC: %Y year,
 * %m month, %d day, %H hour, %M minute, %S second, %e %f %F its milli-, micro- and nanoseconds, %E seconds since 1970;
 * %a %A %b %h %B %c %C %D %x %I %p %r %R %T %X as in strftime in the C locale, except that %c ends with the year and
 * %C is the year's last two digits; %u %i %o %O nano-, micro-, milli- and whole seconds since the last record. A
 * width may stand after the %, with - to fill on the right, = on both sides, and ! behind it to cut: %-8l, %12!s,
 * %12!!.
 *
 * The log file is opened when the first record is written; one line per record. Several processes may write the same
 * file and rotate it: lines stay whole, and none is lost to a rotation unless it was next to be removed.
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
 * The log of (module_name, second_name), made on the first call for that pair; each call needs a matching zel_free_log,
 * also one that returns NULL.
 *
 * @param configuration_file_name read when the log is made and not for later calls; opened as given, so relative to the
 *        working directory.
 * @return the log, owned by the library; NULL when memory runs out.
 */
NEROVA_ZEL_LOGGER_API void* zel_get_log(const char* module_name, const char* second_name,
                                        const char* configuration_file_name);

/**
 * Writes one record. A record above the configured level costs one comparison. Waits for records of other threads; for
 * those of other processes only on Windows, at most a quarter of a second.
 *
 * @param log from zel_get_log and not yet freed; NULL is refused.
 * @param level the lower, the more severe; 2 is an error.
 * @param message one line; line breaks in it become blanks.
 * @return 0 when the record was written, or taken with flush = buffer; 1 when its level is not wanted or it cannot be
 *         written. Records that waited in memory and then cannot be written are dropped.
 */
NEROVA_ZEL_LOGGER_API int32_t zel_log(void* log, int32_t level, const char* source_file, int32_t source_line,
                                      const char* function_name, const char* message);

/** Takes back one zel_get_log; the last one for a pair of names closes the log. An unknown pair does nothing. */
NEROVA_ZEL_LOGGER_API void zel_free_log(const char* module_name, const char* second_name);

#ifdef __cplusplus
}
#endif

#endif
