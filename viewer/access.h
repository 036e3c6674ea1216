#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace nerova_zel {

/** What of a request decides whether it is answered. What was not sent is empty; names of headers repeat. */
struct RequestHead {
  std::string method;
  /** As sent: path and query. */
  std::string target;
  std::vector<std::string> host;
  std::vector<std::string> origin;
  std::vector<std::string> fetch_site;
  std::vector<std::string> cookie;
  /** A part of a file is asked for, or something is sent along. */
  bool has_range = false;
  bool has_body = false;
};

/** The longest target that is read; every request of the page is much shorter. */
constexpr std::size_t longest_target = 2048;

/**
 * Who may ask: the browser that was given a token, which it exchanges for a cookie. Tokens are for one exchange. Other
 * web pages are kept out by what browsers say of requests (Host, Origin, Sec-Fetch-Site) and by the cookie, which is
 * not sent along with theirs. Thread-safe.
 */
class Access {
 public:
  /** `tell` is called with each new token, the first time from here. Throws std::system_error without random numbers.
   */
  Access(int port, std::function<void(const std::string& token)> tell);

  struct Verdict {
    /** 0 where the request is to be answered, 303 with a cookie, else the status of a refusal. */
    int status = 0;
    /** Of a refusal. */
    std::string sentence;
    /** Set-Cookie. */
    std::string cookie;
  };

  Verdict judge(const RequestHead& head);

 private:
  Verdict exchange(const std::string& token);
  bool has_cookie(const std::vector<std::string>& headers) const;

  const std::string cookie_name_;
  const std::string cookie_;
  const std::function<void(const std::string&)> tell_;
  std::mutex mutex_;
  std::string token_;
  std::vector<std::string> used_;
};

}  // namespace nerova_zel
