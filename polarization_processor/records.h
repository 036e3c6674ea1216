#pragma once

#include "log_client.h"

/**
 * Every record that this library writes. Level, line and wording of each are what readers of logs search for: they stay
 * as they are, wherever the code that writes them moves.
 */
namespace nerova_zel::records {

void create_without_sse(const LogClient& client) noexcept;
void create_out_of_memory(const LogClient& client) noexcept;
void create_unknown_error(const LogClient& client) noexcept;
void set_coefficients_null_handle(const LogClient& client) noexcept;
void get_coefficients_null_handle(const LogClient& client) noexcept;
void transform_null_handle(const LogClient& client) noexcept;
void destroy_null_handle(const LogClient& client) noexcept;
void transform_time(const LogClient& client, double microseconds) noexcept;

}  // namespace nerova_zel::records
