// Who may ask, and for what: each case is one way in that must be shut.
#include <gtest/gtest.h>

#include <fstream>

#include "command_line/tool_run.h"
#include "served_page.h"
#include "viewing/kept_items.h"

namespace nerova_zel::test {
namespace {

class AccessTest : public ToolTest {
 protected:
  AccessTest() {
    write_pgm("a.pgm", std::vector<std::uint16_t>(16 * 8, 1000), 16, 8, 12);
    FrameRequest request;
    request.frames = {"a.pgm"};
    page_ = std::make_unique<ServedPage>(request);
  }

  int status(const std::string& method, const std::string& target, httplib::Headers headers) const {
    httplib::Client client("127.0.0.1", page_->port());
    httplib::Request request;
    request.method = method;
    request.path = target;
    request.headers = std::move(headers);
    const auto reply = client.send(request);
    return reply ? reply->status : 0;
  }

  std::unique_ptr<ServedPage> page_;
};

TEST_F(AccessTest, OnlyTheBrowserThatWasGivenTheTokenIsAnswered) {
  const std::string port = std::to_string(page_->port());
  const auto own = [&](httplib::Headers more) {
    more.emplace("Cookie", page_->cookie());
    return more;
  };
  const struct {
    const char* what;
    const char* method;
    const char* target;
    httplib::Headers headers;
    int status;
  } cases[] = {
      {"the page itself", "GET", "/", own({}), 200},
      {"through a tunnel", "GET", "/", own({{"Host", "localhost:8080"}, {"Origin", "http://localhost:8080"}}), 200},
      {"by the other protocol", "GET", "/", own({{"Host", "[::1]:" + port}}), 200},
      {"among other cookies", "GET", "/", {{"Cookie", "a=b; " + page_->cookie() + "; c=d"}}, 200},
      {"no cookie", "GET", "/", {}, 403},
      {"no cookie, an interface", "GET", "/api/session", {}, 403},
      {"another cookie", "GET", "/", {{"Cookie", page_->cookie() + "0"}}, 403},
      {"a cookie cut short", "GET", "/", {{"Cookie", page_->cookie().substr(0, page_->cookie().size() - 1)}}, 403},
      {"another token", "GET", "/?token=00000000000000000000000000000000", {}, 403},
      {"a name that leads here", "GET", "/", own({{"Host", "example.org:" + port}}), 403},
      {"a name that begins alike", "GET", "/", own({{"Host", "localhost.example.org"}}), 403},
      {"a host with more behind the port", "GET", "/", own({{"Host", "localhost:80@example.org"}}), 403},
      {"two hosts", "GET", "/", own({{"Host", "localhost"}, {"Host", "example.org"}}), 403},
      {"another page", "GET", "/api/session", own({{"Origin", "http://example.org"}}), 403},
      {"a page of another port", "GET", "/api/session", own({{"Origin", "http://localhost:1"}}), 403},
      {"a page without origin", "GET", "/api/session", own({{"Origin", "null"}}), 403},
      {"an image in another page", "GET", "/api/session", own({{"Sec-Fetch-Site", "cross-site"}}), 403},
      {"a page of a sister name", "GET", "/api/session", own({{"Sec-Fetch-Site", "same-site"}}), 403},
      {"POST", "POST", "/api/session", own({{"Content-Length", "0"}}), 405},
      {"PUT", "PUT", "/", own({}), 405},
      {"DELETE", "DELETE", "/", own({}), 405},
      {"OPTIONS", "OPTIONS", "/api/session", own({}), 405},
      {"a part of a file", "GET", "/", own({{"Range", "bytes=0-1"}}), 400},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(status(one.method, one.target, one.headers), one.status) << one.what;
  }
  EXPECT_EQ(status("GET", "/api/session?since=" + std::string(4000, '1'), own({})), 414);
}

TEST_F(AccessTest, TokensServeOnce) {
  const std::string used = page_->addresses().at(0).substr(page_->addresses().at(0).find("/?"));
  EXPECT_EQ(status("GET", used, {}), 403);
  ASSERT_EQ(page_->addresses().size(), 2U) << "the person at the terminal is given another address";
  EXPECT_EQ(status("GET", used, {}), 403);
  EXPECT_EQ(page_->addresses().size(), 2U) << "once, not as often as somebody likes";
  EXPECT_EQ(status("GET", used, {{"Cookie", page_->cookie()}}), 303) << "loaded again in the same browser";
  const std::string next = page_->addresses().at(1).substr(page_->addresses().at(1).find("/?"));
  EXPECT_EQ(status("GET", next, {}), 303);
}

TEST_F(AccessTest, OtherInterfacesDoNotAnswer) {
  EXPECT_FALSE(httplib::Client("127.0.0.2", page_->port()).Get("/"));
  EXPECT_FALSE(httplib::Client("::1", page_->port()).Get("/"));
}

TEST_F(AccessTest, RepliesKeepScriptsAndFramesOfOthersOut) {
  for (const char* target : {"/", "/api/session", "/missing"}) {
    const auto reply = page_->get(target);
    const std::string policy = reply->get_header_value("Content-Security-Policy");
    EXPECT_EQ(policy.rfind("default-src 'none'; script-src 'self';", 0), 0U) << target;
    EXPECT_EQ(policy.find("unsafe"), std::string::npos);
    EXPECT_NE(policy.find("frame-ancestors 'none'"), std::string::npos);
    EXPECT_EQ(reply->get_header_value("X-Content-Type-Options"), "nosniff");
    EXPECT_EQ(reply->get_header_value("Cache-Control"), "no-store");
    EXPECT_EQ(reply->get_header_value("Access-Control-Allow-Origin"), "");
  }
  EXPECT_NE(page_->get("/")->body.find("<script type=\"module\" src="), std::string::npos);
}

TEST_F(AccessTest, NoRequestReachesFilesOrAsksForTooMuch) {
  for (const char* target :
       {"/a.pgm", "/../a.pgm", "/js/../../a.pgm", "/%2e%2e/a.pgm", "//etc/passwd", "/js/%00", "/js"}) {
    EXPECT_EQ(page_->get(target)->status, 404) << target;
  }
  const auto images = [](const std::string& query) { return "/api/images?images=power&" + query; };
  for (const std::string& target : {images("source=1"),
                                    images("source=-1"),
                                    images("source=18446744073709551616"),
                                    images("frame=1"),
                                    images("layout=10"),
                                    images("origin=1"),
                                    images("origin=0,-1"),
                                    images("origin=0,2000000"),
                                    images("bit_depth=17"),
                                    images("calibration=1"),
                                    images("plane=1"),
                                    images("step=0"),
                                    images("step=5000"),
                                    images("region=0,0,17,8"),
                                    images("region=15,0,2,8"),
                                    images("region=0,0,0,8"),
                                    images("region=9,9,268435456,1"),
                                    images("region=0,0,16"),
                                    images("path=/etc/passwd"),
                                    images("step=1&step=1"),
                                    images("step"),
                                    images("step=1x"),
                                    images("step=%zz"),
                                    images("step=%"),
                                    std::string("/api/images?images=power,nothing"),
                                    std::string("/api/images"),
                                    "/api/images?images=" +
                                        [] {
                                          std::string many = "raw";
                                          for (int i = 0; i < 100; ++i) {
                                            many += ",raw";
                                          }
                                          return many;
                                        }(),
                                    std::string("/api/region?region=0,0,1,1"),
                                    std::string("/api/series?count=1001"),
                                    std::string("/api/series?from=1"),
                                    std::string("/api/series?skip=1"),
                                    std::string("/api/export?image=power&format=exe"),
                                    std::string("/api/export?image=raw4"),
                                    std::string("/api/session?since=x"),
                                    std::string("/api/tables?x=1"),
                                    std::string("/?x=1")}) {
    const auto reply = page_->get(target);
    EXPECT_EQ(reply->status, 400) << target;
    EXPECT_TRUE(nlohmann::json::parse(reply->body).at("error").is_string()) << target;
  }
}

TEST(KeptItems, StayWithinTheBoundAndKeepWhatIsUsed) {
  KeptItems kept(10);
  const auto item = std::make_shared<const int>(1);
  kept.add("a", item, 4);
  kept.add("b", item, 4);
  EXPECT_TRUE(kept.find<int>("a"));
  kept.add("c", item, 4);
  EXPECT_FALSE(kept.find<int>("b"));
  EXPECT_TRUE(kept.find<int>("a"));
  kept.add("a", item, 8);
  EXPECT_FALSE(kept.find<int>("c"));
  kept.add("d", item, 11);
  EXPECT_FALSE(kept.find<int>("d"));
  EXPECT_EQ(kept.bytes(), 8U);
}

}  // namespace
}  // namespace nerova_zel::test
