// Frames that come while the page is open.
#include <gtest/gtest.h>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <csignal>
#include <fstream>
#include <thread>

#include "command_line/tool_run.h"
#include "failure.h"
#include "served_page.h"

namespace nerova_zel::test {
namespace {

/** Frames of 4 x 2 bytes, whose samples are their numbers. */
std::string frames_from(int first, int count) {
  std::string bytes;
  for (int i = first; i < first + count; ++i) {
    bytes += std::string(8, static_cast<char>(i));
  }
  return bytes;
}

class LiveTest : public ToolTest {
 protected:
  LiveTest() {
    request_.headerless = HeaderlessLayout{{4, 2}, PixelFormat::mono8};
    request_.frames = {"a.raw"};
  }

  void append(const std::string& bytes) const {
    std::ofstream(path("a.raw"), std::ios::binary | std::ios::app) << bytes;
  }

  FrameRequest request_;
};

TEST_F(LiveTest, GrowingFilesTellThatTheyDoAndHowFar) {
  append(frames_from(0, 2) + "cut");
  ServedPage page(request_);
  nlohmann::json session = page.json("/api/session");
  EXPECT_EQ(session.at("sources").at(0).at("frames"), 2) << "a frame that is being written is none yet";
  EXPECT_EQ(session.at("sources").at(0).at("live"), true);
  std::thread writer([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    append(std::string(5, 'x') + frames_from(3, 2));
  });
  session = page.json("/api/session?since=" + session.at("revision").dump());
  writer.join();
  EXPECT_EQ(session.at("sources").at(0).at("frames"), 5);
  EXPECT_EQ(page.images("images=raw&frame=4").at("raw"), page.images("images=raw&frame=4").at("raw"));
  EXPECT_EQ(page.images("images=raw&frame=4&region=3,1,1,1").at("raw"), std::string("\4\0", 2));
  write("a.raw", frames_from(7, 1));  // recorded anew
  page.json("/api/session?since=" + session.at("revision").dump());
  EXPECT_EQ(page.images("images=raw&frame=0&region=0,0,1,1").at("raw"), std::string("\7\0", 2));
}

TEST_F(LiveTest, SeriesReadTheirRowsOfEveryFormat) {
  for (const PixelFormat format : {PixelFormat::mono10p, PixelFormat::mono12_packed, PixelFormat::mono16}) {
    request_.headerless = HeaderlessLayout{{5, 9}, format, 3};
    std::string bytes(3 + 3 * byte_count(format, 45), '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<char>(i * 37 % 251 % (format == PixelFormat::mono16 ? 97 : 256));
    }
    write("a.raw", bytes);
    ServedPage page(request_);
    for (int y = 0; y < 9; ++y) {
      const auto series = page.json("/api/series?x=3&y=" + std::to_string(y));
      ASSERT_EQ(series.at("frames"), nlohmann::json({0, 1, 2}));
      for (std::size_t frame = 0; frame < 3; ++frame) {
        const auto raw = page.images("images=raw4,s1&frame=" + std::to_string(frame));
        const auto at = static_cast<std::size_t>(5 * y + 3);
        EXPECT_EQ(series.at("samples").at(frame).at(2),
                  reinterpret_cast<const std::uint16_t*>(raw.at("raw4").data())[4 * at + 2]);
        EXPECT_EQ(series.at("s1").at(frame), reinterpret_cast<const float*>(raw.at("s1").data())[at]);
      }
    }
  }
}

TEST(FrameStream, KeepsTheLastFramesThatFit) {
  FrameStream stream("standard input", 3 * 8 * sizeof(std::uint16_t));
  RawFrame frame;
  for (std::uint16_t i = 0; i < 5; ++i) {
    frame.pixels.assign(8, i);
    stream.add(10 + i, frame);
  }
  EXPECT_EQ(stream.state().first, 12U);
  EXPECT_EQ(stream.state().frames, 3U);
  EXPECT_EQ(stream.read(14).pixels[0], 4);
  EXPECT_THROW(stream.read(11), Failure);
  EXPECT_THROW(stream.read(15), Failure);
  frame.pixels.assign(1000, 1);
  stream.add(15, frame);
  EXPECT_EQ(stream.state().frames, 1U) << "the last one is kept, however large";
}

#if !defined(_WIN32)
TEST_F(LiveTest, TheProgramShowsStandardInputAndEndsWithCtrlC) {
  write("in.raw", frames_from(1, 3));
  const int child = fork();
  if (child == 0) {
    static_cast<void>(!std::freopen("in.raw", "r", stdin));
    static_cast<void>(!std::freopen("out", "w", stdout));
    std::signal(SIGINT, SIG_DFL);
    execl(NEROVA_TOOL, NEROVA_TOOL, "view", "-", "--raw", "4x2", "--pixel-format", "Mono8", "--no-open", nullptr);
    _exit(9);
  }
  std::string address;
  for (int i = 0; i < 500 && address.find('\n') == std::string::npos; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    address = read("out");
  }
  ASSERT_NE(address.find("/?token="), std::string::npos) << address;
  address.pop_back();
  httplib::Client client("127.0.0.1", std::stoi(address.substr(address.rfind(':') + 1)));
  const std::string set = client.Get(address.substr(address.find("/?")).c_str())->get_header_value("Set-Cookie");
  const httplib::Headers cookie = {{"Cookie", set.substr(0, set.find(';'))}};
  nlohmann::json source = {{"live", true}};
  for (int i = 0; i < 500 && source.at("live") == true; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    source = nlohmann::json::parse(client.Get("/api/session", cookie)->body).at("sources").at(0);
  }
  EXPECT_EQ(source.at("kind"), "stream");
  EXPECT_EQ(source.at("frames"), 3);
  EXPECT_EQ(client.Get("/api/images?images=raw&frame=2", cookie)->status, 200);
  kill(child, SIGINT);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}
#endif

TEST_F(LiveTest, OnceEndsWithTheLastPage) {
  append(frames_from(0, 1));
  ViewSettings settings;
  settings.once = true;
  settings.closed_time = std::chrono::milliseconds(800);  // a busy machine stops tests for some hundred
  ServedPage page(request_, settings);
  std::this_thread::sleep_for(std::chrono::milliseconds(900));
  EXPECT_FALSE(page.viewer().is_over()) << "no page was open yet";
  const std::string revision = page.json("/api/session").at("revision").dump();
  {
    httplib::Client browser("127.0.0.1", page.port());
    browser.set_read_timeout(1, 0);
    browser.Get(("/api/session?since=" + revision).c_str(), httplib::Headers{{"Cookie", page.cookie()}});
    EXPECT_FALSE(page.viewer().is_over());
  }
  for (int i = 0; i < 10; ++i) {
    page.json("/api/session?since=999");
    EXPECT_FALSE(page.viewer().is_over()) << "a page that has news each time it asks never waits";
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  for (int i = 0; i < 200 && !page.viewer().is_over(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_TRUE(page.viewer().is_over());
}

}  // namespace
}  // namespace nerova_zel::test
