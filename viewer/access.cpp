#include "access.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <random>
#include <string_view>

namespace nerova_zel {

namespace {

constexpr std::size_t digits = 32;

/** 128 bits from the system's source of random numbers, in hexadecimal digits. */
std::string random_text() {
  std::random_device source;
  std::string text;
  while (text.size() < digits) {
    const unsigned bits = source();
    for (unsigned i = 0; i < 8; ++i) {
      text += "0123456789abcdef"[(bits >> (4 * i)) & 15U];
    }
  }
  return text;
}

/** Takes the same time wherever they differ. */
bool are_equal(std::string_view a, std::string_view b) {
  unsigned difference = a.size() == b.size() ? 0 : 1;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    difference |= static_cast<unsigned char>(a[i]) ^ static_cast<unsigned>(static_cast<unsigned char>(b[i]));
  }
  return difference == 0;
}

bool is_port(std::string_view text) {
  return !text.empty() && text.size() <= 5 &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
}

/** Names of this computer with any port: through a tunnel a browser sees another one. */
bool is_local(std::string_view host) {
  for (const std::string_view name : {"localhost", "127.0.0.1", "[::1]"}) {
    if (host.substr(0, name.size()) == name) {
      const std::string_view rest = host.substr(name.size());
      return rest.empty() || (rest.front() == ':' && is_port(rest.substr(1)));
    }
  }
  return false;
}

constexpr const char* token_path = "/?token=";

}  // namespace

Access::Access(int port, std::function<void(const std::string&)> tell)
    : cookie_name_("nerova_zel_view_" + std::to_string(port)),
      cookie_(random_text()),
      tell_(std::move(tell)),
      token_(random_text()) {
  tell_(token_);
}

bool Access::has_cookie(const std::vector<std::string>& headers) const {
  bool found = false;
  for (const std::string_view header : headers) {
    for (std::size_t at = 0; at < header.size();) {
      const std::size_t end = std::min(header.find(';', at), header.size());
      const std::string_view pair = header.substr(at, end - at);
      const std::string_view name = pair.substr(0, pair.find('='));
      if (name == cookie_name_ && name.size() < pair.size() && are_equal(pair.substr(name.size() + 1), cookie_)) {
        found = true;
      }
      at = end + 1;
      while (at < header.size() && header[at] == ' ') {
        ++at;
      }
    }
  }
  return found;
}

Access::Verdict Access::exchange(const std::string& token) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (are_equal(token, token_)) {
    used_.push_back(token_);
    token_ = random_text();
    return {303, "", cookie_name_ + "=" + cookie_ + "; HttpOnly; SameSite=Strict; Path=/"};
  }
  for (std::string& used : used_) {
    if (are_equal(token, used)) {
      used.clear();  // told once
      tell_(token_);
      return {403, "This address has been used already. The terminal in which nerova-polarize runs shows a new one.",
              ""};
    }
  }
  return {403, "This address opens nothing. Open the one that nerova-polarize view printed last.", ""};
}

Access::Verdict Access::judge(const RequestHead& head) {
  if (head.target.size() > longest_target) {
    return {414, "The address is too long.", ""};
  }
  if (head.host.size() != 1 || !is_local(head.host.front())) {
    return {403, "This server answers requests for localhost only.", ""};
  }
  if (head.origin.size() > 1 || (head.origin.size() == 1 && head.origin.front() != "http://" + head.host.front())) {
    return {403, "This server does not answer other web pages.", ""};
  }
  for (const std::string& site : head.fetch_site) {
    if (site != "same-origin" && site != "none") {
      return {403, "This server does not answer other web pages. Paste the address into the browser's address bar.",
              ""};
    }
  }
  if (head.method != "GET") {
    return {405, "This server answers GET requests only.", ""};
  }
  if (head.has_range || head.has_body) {
    return {400, "This server sends whole replies, and takes nothing.", ""};
  }
  if (has_cookie(head.cookie)) {
    // The address that opened the page, once more: nothing to exchange.
    return {head.target.rfind(token_path, 0) == 0 ? 303 : 0, "", ""};
  }
  if (head.target.rfind(token_path, 0) == 0) {
    return exchange(head.target.substr(std::string_view(token_path).size()));
  }
  return {403, "Open the address that nerova-polarize view printed, which holds a token.", ""};
}

}  // namespace nerova_zel
