// The viewer as a server of HTTP on the loopback interface.
#include <httplib.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

#include "access.h"
#include "api.h"
#include "failure.h"
#include "viewer.h"

namespace nerova_zel {

namespace {

constexpr const char* loopback = "127.0.0.1";
/** Each connection of a browser has one, and each page that waits for news. */
constexpr std::size_t threads = 32;
constexpr std::size_t most_bytes_at_once = std::size_t{1} << 20U;

constexpr const char* content_policy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

std::vector<std::string> all_of(const httplib::Request& request, const char* name) {
  std::vector<std::string> values;
  for (std::size_t i = 0; i < request.get_header_value_count(name); ++i) {
    values.push_back(request.get_header_value(name, i));
  }
  return values;
}

RequestHead head_of(const httplib::Request& request) {
  const bool has_length = request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0";
  return {request.method,
          request.target,
          all_of(request, "Host"),
          all_of(request, "Origin"),
          all_of(request, "Sec-Fetch-Site"),
          all_of(request, "Cookie"),
          request.has_header("Range"),
          has_length || request.has_header("Transfer-Encoding")};
}

/** Sends the parts from where they lie. */
void send(Reply reply, httplib::Response& response) {
  response.status = reply.status;
  if (!reply.file_name.empty()) {
    response.set_header("Content-Disposition", "attachment; filename=\"" + reply.file_name + "\"");
  }
  std::size_t size = 0;
  for (const CutBytes& part : reply.parts) {
    size += part.size;
  }
  response.set_content_provider(
      size, reply.media_type,
      [parts = std::move(reply.parts)](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        for (const CutBytes& part : parts) {
          if (offset < part.size) {
            const std::size_t count = std::min(part.size - offset, most_bytes_at_once);
            return sink.write(reinterpret_cast<const char*>(part.data) + offset, count);
          }
          offset -= part.size;
        }
        return true;
      });
}

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds look_again{40};

class Server : public Viewer {
 public:
  Server(ViewSettings settings, ViewedFrames& frames) : api_(std::move(settings), frames), port_(bind()) {
    const std::string address = std::string("http://") + loopback + ":" + std::to_string(port_);
    access_.emplace(port_, [this, address](const std::string& token) {
      api_.settings().tell_address(address + "/?token=" + token);
    });
    listener_ = std::thread([this] { server_.listen_after_bind(); });
  }

  ~Server() override {
    while (!server_.is_running()) {  // it cannot be stopped before it has begun
      std::this_thread::yield();
    }
    stops_ = true;
    server_.stop();
    listener_.join();
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool is_over() const override {
    const std::lock_guard<std::mutex> lock(mutex_);
    return api_.settings().once && was_open_ && waiting_ == 0 && Clock::now() - closed_ > api_.settings().closed_time;
  }

 private:
  int bind() {
    server_.new_task_queue = [] { return new httplib::ThreadPool(threads); };
    server_.set_tcp_nodelay(true);
    server_.set_keep_alive_max_count(1'000'000);
    server_.set_payload_max_length(0);
    // Not shared with another program, as the default is.
    server_.set_socket_options([](socket_t socket) {
#if defined(_WIN32)
      constexpr int alone = SO_EXCLUSIVEADDRUSE;
#else
      constexpr int alone = SO_REUSEADDR;  // else a port stays taken for a while after its program ended
#endif
      const int yes = 1;
      setsockopt(socket, SOL_SOCKET, alone, reinterpret_cast<const char*>(&yes), sizeof yes);
    });
    server_.set_default_headers({{"Content-Security-Policy", content_policy},
                                 {"X-Content-Type-Options", "nosniff"},
                                 {"Referrer-Policy", "no-referrer"},
                                 {"Cache-Control", "no-store"},
                                 {"Cross-Origin-Resource-Policy", "same-origin"},
                                 {"Cross-Origin-Opener-Policy", "same-origin"}});
    server_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
      answer(request, response);
      return httplib::Server::HandlerResponse::Handled;
    });
    const int wanted = api_.settings().port;
    const int port = wanted == 0                              ? server_.bind_to_any_port(loopback)
                     : server_.bind_to_port(loopback, wanted) ? wanted
                                                              : -1;
    if (port <= 0) {
      throw Failure("cannot serve on port " + std::to_string(wanted) + " of " + loopback +
                    "; another program may have it.");
    }
    return port;
  }

  void answer(const httplib::Request& request, httplib::Response& response) {
    const Access::Verdict verdict = access_->judge(head_of(request));
    if (verdict.status == 303) {
      if (!verdict.cookie.empty()) {
        response.set_header("Set-Cookie", verdict.cookie);
      }
      response.set_redirect("/", 303);
      return;
    }
    if (verdict.status != 0) {
      if (verdict.status == 405) {
        response.set_header("Allow", "GET");
      }
      if (request.method != "GET") {
        response.set_header("Connection", "close");  // what it sends along is not read
      }
      response.status = verdict.status;
      response.set_content(verdict.sentence + "\n", "text/plain; charset=utf-8");
      return;
    }
    const std::size_t end = request.target.find('?');
    Reply reply = api_.answer(request.path, end == std::string::npos ? "" : request.target.substr(end + 1));
    if (reply.later) {
      send_later(std::move(reply), response);
    } else {
      send(std::move(reply), response);
    }
  }

  /** A page that waits is one that is open. */
  void send_later(Reply reply, httplib::Response& response) {
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      was_open_ = true;
      ++waiting_;
    }
    response.set_chunked_content_provider(
        reply.media_type,
        [this, later = std::move(reply.later)](std::size_t, httplib::DataSink& sink) {
          while (sink.is_writable() && !stops_) {
            if (const std::optional<Reply> now = later()) {
              for (const CutBytes& part : now->parts) {
                sink.write(reinterpret_cast<const char*>(part.data), part.size);
              }
              sink.done();
              return true;
            }
            std::this_thread::sleep_for(look_again);
          }
          return false;
        },
        [this](bool) {
          const std::lock_guard<std::mutex> lock(mutex_);
          --waiting_;
          closed_ = Clock::now();
        });
  }

  Api api_;
  httplib::Server server_;
  int port_;
  std::optional<Access> access_;
  mutable std::mutex mutex_;
  int waiting_ = 0;  ///< pages
  bool was_open_ = false;
  Clock::time_point closed_{};
  std::atomic<bool> stops_{false};
  std::thread listener_;
};

}  // namespace

std::unique_ptr<Viewer> start_viewer(ViewSettings settings, ViewedFrames& frames) {
  return std::make_unique<Server>(std::move(settings), frames);
}

}  // namespace nerova_zel
