// What is other on Windows: names of files, control events, a pipe that stays idle; and the program itself.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <array>
#include <thread>

#include "batch/interruption.h"
#include "tool_run.h"

namespace nerova_zel::test {
namespace {

namespace fs = std::filesystem;

class WindowsTest : public ToolTest {
 protected:
  /** What a program's end and streams were. */
  struct Ended {
    DWORD code;
    std::string output;
    std::string errors;
  };

  /** Runs the program with arguments as Windows has them; `< in` reads the file of that name. */
  Ended start(const std::wstring& arguments, const std::string& input = "NUL") const {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const auto open = [&](const std::string& name, DWORD access, DWORD how) {
      return CreateFileA(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, how, 0, nullptr);
    };
    STARTUPINFOW streams{};
    streams.cb = sizeof(streams);
    streams.dwFlags = STARTF_USESTDHANDLES;
    streams.hStdInput = open(input, GENERIC_READ, OPEN_EXISTING);
    streams.hStdOutput = open("out", GENERIC_WRITE, CREATE_ALWAYS);
    streams.hStdError = open("errors", GENERIC_WRITE, CREATE_ALWAYS);
    std::wstring line = L"\"" + fs::u8path(NEROVA_TOOL).make_preferred().wstring() + L"\" " + arguments;
    PROCESS_INFORMATION process{};
    EXPECT_NE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &streams, &process), 0);
    DWORD code = 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    for (const HANDLE handle :
         {process.hProcess, process.hThread, streams.hStdInput, streams.hStdOutput, streams.hStdError}) {
      CloseHandle(handle);
    }
    return {code, read("out"), read("errors")};
  }
};

// A name that the code page has not, one with blanks, a drive letter, a pattern, and a path longer than 260 characters.
TEST_F(WindowsTest, TheProgramTakesNamesAsWindowsHasThem) {
  const std::wstring name = L"\u30C6\u30B9\u30C8 \u00E9";
  Ended ended = start(L"simulate \"" + name + L".png\" --size 32x16 --truth \"" + name + L"\"");
  EXPECT_EQ(ended.code, 0U) << ended.errors;
  EXPECT_EQ(ended.output.rfind(u8"\u30C6\u30B9\u30C8 \u00E9.png: 32 x 16", 0), 0U) << ended.output;
  EXPECT_EQ(ended.output.find('\r'), std::string::npos);
  EXPECT_TRUE(fs::exists(name + L"/" + name + L"_true_angle.tiff"));
  const std::wstring drive = fs::absolute(".").wstring();
  const std::wstring deep = std::wstring(100, L'd') + L"\\" + std::wstring(100, L'e') + L"\\" + std::wstring(100, L'f');
  ended = start(L"transform \"" + drive + L"\\\u30C6*.PNG\" --outputs dolp,sheet -f npy -o \"" + deep + L"\" -v");
  EXPECT_EQ(ended.code, 0U) << ended.errors;
  EXPECT_NE(ended.errors.find(u8"nerova_zel_polarization_processor.dll, "), std::string::npos) << ended.errors;
  ended = start(L"info \"" + deep + L"/" + name + L"_dolp.npy\" " + deep + L"\\*.npy");
  EXPECT_EQ(ended.code, 0U) << ended.errors;
  EXPECT_NE(ended.output.find("_dolp.npy: "), std::string::npos) << ended.output;
  ended = start(L"transform missing.png -o r");
  EXPECT_EQ(ended.code, 1U);
  EXPECT_EQ(ended.errors.rfind("nerova-polarize: cannot read missing.png: No such file or directory", 0), 0U);
  ended = start(L"transform \"" + name + L".png\" --sharpen -o r");
  EXPECT_EQ(ended.code, 2U);
  ended = start(L"record x.raw");
  EXPECT_NE(ended.code, 0U);
  EXPECT_NE(ended.errors.find("Linux"), std::string::npos) << ended.errors;
}

// 26 ends a text, and 13 before 10 is dropped, where a stream is not binary.
TEST_F(WindowsTest, StandardInputIsBinary) {
  std::string frames;
  for (int i = 0; i < 3 * 16 * 16; ++i) {
    frames += std::array<char, 3>{'\x1A', '\r', '\n'}[static_cast<std::size_t>(i % 3)];
  }
  write("frames.raw", frames);
  const Ended ended = start(L"transform - --raw 16x16 --pixel-format Mono8 --outputs hv -f npy -o r", "frames.raw");
  EXPECT_EQ(ended.code, 0U) << ended.errors;
  EXPECT_TRUE(fs::exists("r/stdin_000002_hv.npy"));
  EXPECT_FALSE(fs::exists("r/stdin_000003_hv.npy"));
}

TEST_F(WindowsTest, AControlEventEndsTheWaitForAnIdlePipe) {
  FreeConsole();
  if (AllocConsole() == FALSE) {
    GTEST_SKIP() << "there is no console";
  }
  std::array<int, 2> ends{};
  ASSERT_EQ(_pipe(ends.data(), 4096, _O_BINARY), 0);
  _dup2(ends[0], 0);
  const Interruption interruption;
  std::array<char, 8> room{};
  ASSERT_EQ(_write(ends[1], "12345", 5), 5);
  EXPECT_EQ(Interruption::read_standard_input(room.data(), room.size()), std::size_t{5});
  EXPECT_EQ(std::string(room.data(), 5), "12345");
  std::thread presses([] {
    Sleep(200);
    GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
  });
  EXPECT_EQ(Interruption::read_standard_input(room.data(), room.size()), std::nullopt);
  presses.join();
  EXPECT_TRUE(Interruption::is_requested());
}

}  // namespace
}  // namespace nerova_zel::test
