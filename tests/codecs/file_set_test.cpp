#include "file_set.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <thread>

#include "file_bytes.h"
#include "platform/files.h"
#include "samples_of_files.h"

namespace nerova_zel::test {
namespace {

using Names = std::vector<std::string>;

void put(const std::filesystem::path& path, const std::string& text) { std::ofstream(path) << text; }

std::string content_of(const std::filesystem::path& path) {
  const Bytes bytes = read_bytes(path.string());
  return {bytes.begin(), bytes.end()};
}

Bytes bytes(const std::string& text) { return {text.begin(), text.end()}; }

TEST(FileSet, FilesAppearTogetherOnCommit) {
  const Folder folder;
  put(folder / "one", "earlier");
  {
    FileSet set;
    set.make_directory(folder / "deep/below");
    set.write(folder / "one", bytes("1"));
    set.write(folder / "deep/below/two", {{"tw", 2}, {"o", 1}});
    EXPECT_EQ(content_of(folder / "one"), "earlier");
    EXPECT_FALSE(std::filesystem::exists(folder / "deep/below/two"));
    set.commit();
  }
  EXPECT_EQ(content_of(folder / "one"), "1");
  EXPECT_EQ(content_of(folder / "deep/below/two"), "two");
  EXPECT_EQ(folder.names(), (Names{"deep", "one"})) << "nothing temporary is left";
}

TEST(FileSet, ThreadsMayWriteAtTheSameTime) {
  const Folder folder;
  constexpr std::size_t count = 64;
  FileSet set;
  const auto write = [&](std::size_t first) {
    for (std::size_t number = first; number < count; number += 2) {
      set.write(folder / std::to_string(number), bytes(std::to_string(number)));
    }
  };
  std::thread other(write, 1);
  write(0);
  other.join();
  set.commit();
  ASSERT_EQ(folder.names().size(), count);
  for (std::size_t number = 0; number < count; ++number) {
    EXPECT_EQ(content_of(folder / std::to_string(number)), std::to_string(number));
  }
}

TEST(FileSet, NothingIsLeftWithoutCommit) {
  const Folder folder;
  put(folder / "one", "earlier");
  {
    FileSet set;
    set.make_directory(folder / "deep/below");
    set.write(folder / "one", bytes("1"));
    set.write(folder / "deep/below/two", bytes("2"));
  }
  EXPECT_EQ(content_of(folder / "one"), "earlier");
  EXPECT_EQ(folder.names(), Names{"one"});
}

TEST(FileSet, AFailedCommitPutsEarlierFilesBack) {
  const Folder folder;
  put(folder / "a", "earlier");
  {
    FileSet set;
    for (const char* name : {"a", "b", "c", "d"}) {
      set.write(folder / name, bytes("new"));
    }
    std::filesystem::create_directory(folder / "c");  // cannot be replaced by a file
    put(folder / "c/inside", "");
    EXPECT_NE(error_of([&] { set.commit(); }).find((folder / "c").string()), std::string::npos);
  }
  EXPECT_EQ(content_of(folder / "a"), "earlier");
  EXPECT_EQ(folder.names(), (Names{"a", "c"}));
}

TEST(FileSet, WhatADeadProgramLeftIsUsedAgain) {
  const Folder folder;
  put(folder / "one.partial", "a longer text that was never finished");
  FileSet set;
  set.write(folder / "one", bytes("1"));
  set.commit();
  EXPECT_EQ(content_of(folder / "one"), "1");
  EXPECT_EQ(folder.names(), Names{"one"});
}

TEST(FileSet, WhatDeadProgramsLeftIsRemovedAndWhatIsWrittenIsNot) {
  const Folder folder;
  for (const char* name :
       {"a.png.partial", "a.png.partial2", "b.png.previous1", "someone.partial", "c.png", "partial"}) {
    put(folder / name, "");
  }
  FileSet set;
  set.write(folder / "d.png", bytes("1"));
  remove_stale_files(folder / ".", [](const std::string& name) { return name.size() == 5; });
  EXPECT_EQ(folder.names(), (Names{"c.png", "d.png.partial", "partial", "someone.partial"}));
  set.commit();
  EXPECT_EQ(content_of(folder / "d.png"), "1");
}

TEST(FileSet, TwoSetsMayWriteToOnePlace) {
  const Folder folder;
  auto first = std::make_unique<FileSet>();
  FileSet second;
  first->write(folder / "one", bytes("first"));
  second.write(folder / "one", bytes("second"));
  first->commit();
  EXPECT_EQ(content_of(folder / "one"), "first");
  first.reset();
  second.commit();
  EXPECT_EQ(content_of(folder / "one"), "second");
  EXPECT_EQ(folder.names(), Names{"one"});
}

// Windows takes 259 characters unless asked otherwise, and its names are not in UTF-8.
TEST(FileSet, LongPathsAndForeignNamesAreWrittenAndRead) {
  const Folder folder;
  const std::filesystem::path name = std::filesystem::u8path("\u30C6\u30B9\u30C8 \u00E9");
  std::filesystem::path deep = folder.path();
  for (int i = 0; i < 4; ++i) {
    deep /= name;
    deep += std::string(70, 'x');
  }
  {
    FileSet set;
    set.make_directory(deep);
    set.write(deep / name, bytes("earlier"));
    set.commit();
  }
  FileSet set;
  set.write(deep / name, bytes("new"));
  set.commit();
  const Bytes read = read_bytes((deep / name).u8string());
  EXPECT_EQ(std::string(read.begin(), read.end()), "new");
  std::error_code error;
  const std::vector<DirectoryEntry> entries = directory_entries(deep, error);
  ASSERT_EQ(entries.size(), 1U) << error.message();
  EXPECT_EQ(entries[0].name, name);
  for (std::filesystem::path path = deep / name; path != folder.path(); path = path.parent_path()) {
    EXPECT_TRUE(is_taken(path));
    remove_entry(path);
    EXPECT_FALSE(is_taken(path));
  }
}

TEST(FileSet, PlacesThatCannotBeWrittenAreNamed) {
  const Folder folder;
  put(folder / "file", "");
  std::filesystem::create_directory(folder / "directory");
  FileSet set;
  const auto failure_of_writing = [&](const char* name) {
    return error_of([&] { set.write(folder / name, bytes("1")); });
  };
  EXPECT_EQ(failure_of_writing("directory"),
            "cannot write " + (folder / "directory").string() + ": a directory has that name");
  EXPECT_EQ(failure_of_writing("none/one"),
            "cannot write " + (folder / "none/one").string() + ": No such file or directory");
  EXPECT_EQ(error_of([&] { set.make_directory(folder / "file/below"); }),
            "cannot make the directory " + (folder / "file/below").string() + ": " + (folder / "file").string() +
                " is a file");
#if !defined(_WIN32)
  EXPECT_EQ(error_of([] { FileSet().write("/dev/full/..", bytes("1")); }).rfind("cannot write /dev/full/..", 0), 0U);
#endif
}

}  // namespace
}  // namespace nerova_zel::test
