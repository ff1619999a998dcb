// tav_ini_save_test.cpp - writing the model back: the plain save byte for byte, the atomic save
// and the round trips through the parser.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tav_filename.h"
#include "tav_ini.h"
#include "tav_ini_test_support.h"

namespace {

namespace fs = std::filesystem;
using tav::test::dumpModel;

class IniSave : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::remove_all(directory);  // left by a run that crashed
    fs::create_directories(directory);
  }
  void TearDown() override { fs::remove_all(directory); }
  std::string path(const char* name) const { return (directory / name).string(); }

  // In text mode: the plain save writes through a text stream, which ends lines with CR LF on
  // Windows.
  static std::string read(const std::string& name) {
    std::ifstream in(name);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  const fs::path directory =
      fs::temp_directory_path() /
      ("tav_ini_save_" + std::to_string(testing::UnitTest::GetInstance()->random_seed()) + "_" +
       testing::UnitTest::GetInstance()->current_test_info()->name());
};

TEST_F(IniSave, WritesTheModelByteForByteWithItsDeliberateQuirks) {
  const std::string name = path("plain.ini");
  TavClIniFileSave model{TavClFilename(name.c_str())};
  const std::string input =
      "[S]\na = 1 ; c\nempty =\nsemi = \"x;y\"\ntab = \"1\\t2\"\nquote = \"say \\\"hi\\\";\"\n"
      "blank = \" b \"\ndeleted = 1\n[Gone]\nx = 1\n[T]\n";
  ASSERT_TRUE(model.loadFromBuffer(input.data(), input.size(), '\n', true, false));
  ASSERT_TRUE(model.deleteOption("S", "deleted"));
  ASSERT_TRUE(model.deleteSection("Gone"));
  ASSERT_TRUE(model.save());
  EXPECT_EQ(read(name),
            "\n[S]\na= 1\t; c\nsemi= \"x;y\"\ntab= \"1\\t2\"\nquote= \"say \"hi\";\"\nblank=  b "
            "\n\n[T]\n");

  // The plain format loses what its quirks drop: the empty value, the blanks, the inner quotes.
  TavClIniFile again{TavClFilename(name.c_str())};
  ASSERT_TRUE(again.load(false));
  EXPECT_EQ(dumpModel(again), "[S]a=1{c}semi=x;ytab=1\t2quote=say hi;blank=b[T]");

  std::ofstream closed;
  EXPECT_FALSE(model.save(closed));
  TavClIniFileSave missing{TavClFilename(path("no/such/dir/x.ini").c_str())};
  missing.addSection("S");
  EXPECT_FALSE(missing.save());
}

// What the atomic save writes loads back to the same model: values the plain format would
// change, loaded text of every line kind, and values spread over continuation lines.
TEST_F(IniSave, AtomicSaveRoundTripsEveryValueExactly) {
  const std::string name = path("exact.ini");
  TavClIniFileSave built{TavClFilename(name.c_str())};
  const std::string text =
      "[S]\na = one ; note\nb = \"x;y\" ; after\nc = 'x'\nd = '\\t'\n[ Spaced ]\nmax size = 5\n"
      "[S]\n[S]\nk = v\n[S]\na = abc\n   def ; continued\nz =\n";
  ASSERT_TRUE(built.loadFromBuffer(text.data(), text.size(), '\n', true, true));
  int index = 0;
  for (const char* value : {"", " lead", "trail ", "say \"hi\"", "it's", "$(HOME)/bin", "x;y",
                            "\0017", "\x1b[0m", "\\x41", "'q'", "\t\r\n", "a\"b'c;d$(e"}) {
    ASSERT_TRUE(built.addOption("S", ("v" + std::to_string(index++)).c_str(), value));
  }
  ASSERT_TRUE(built.addOption("S", "long", std::string(1024, '\x02').c_str()));
  ASSERT_TRUE(built.saveAtomic());
  TavClIniFile again{TavClFilename(name.c_str())};
  ASSERT_TRUE(again.load(true));
  EXPECT_EQ(dumpModel(again), dumpModel(built));
  EXPECT_EQ(std::distance(fs::directory_iterator(directory), fs::directory_iterator()), 1)
      << "a temporary file was left beside the target";
}

// The old file stays as it was when the model cannot be written exactly, when the directory is
// missing and when the file is read-only; a file that is replaced keeps its permissions, and a
// new one gets those of any new file.
TEST_F(IniSave, AtomicSaveKeepsTheOldFileAndItsPermissions) {
  const std::string name = path("keep.ini");
  std::ofstream(name, std::ios::binary) << "old contents\n";
  TavClIniFileSave model{TavClFilename(name.c_str())};
  model.addSection("S");
  ASSERT_TRUE(model.addOption("S", "two words", "v"));  // no line reads back as this name
  EXPECT_FALSE(model.saveAtomic());
  EXPECT_EQ(read(name), "old contents\n");
  TavClIniFileSave nowhere{TavClFilename(path("no/such/dir/x.ini").c_str())};
  nowhere.addSection("S");
  EXPECT_FALSE(nowhere.saveAtomic());

  ASSERT_TRUE(model.deleteOption("S", "two words"));
  fs::permissions(name, fs::perms::owner_read);
  EXPECT_FALSE(model.saveAtomic());
  EXPECT_EQ(read(name), "old contents\n");

  const fs::perms shared = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(name, shared);
  const fs::perms before = fs::status(name).permissions();
  ASSERT_TRUE(model.saveAtomic());
  EXPECT_EQ(read(name), "\n[S]\n");
  EXPECT_EQ(fs::status(name).permissions(), before);

  const std::string fresh = path("fresh.ini");
  TavClIniFileSave created{TavClFilename(fresh.c_str())};
  ASSERT_TRUE(created.saveAtomic());
  std::ofstream(path("plain.ini")) << "";
  EXPECT_EQ(fs::status(fresh).permissions(), fs::status(path("plain.ini")).permissions());
}

TEST_F(IniSave, TypedWritersWriteOneLineEach) {
  const std::string name = path("typed.ini");
  // The writers open the model's own file first, which stays empty here.
  TavClIniFileSave model{TavClFilename(path("model.ini").c_str())};
  std::ofstream file(name);
  EXPECT_TRUE(model.saveSection(file, "S", "c"));
  EXPECT_TRUE(model.saveOption(file, "c", '\x01', nullptr));  // leaves the stream in hexadecimal
  EXPECT_TRUE(model.saveOption(file, "i", -12, ""));
  EXPECT_TRUE(model.saveOption(file, "l", -70000L, "n"));
  EXPECT_TRUE(model.saveOption(file, "q", '\'', nullptr));
  EXPECT_TRUE(model.saveOptionBool(file, "t", true, nullptr));
  EXPECT_TRUE(model.saveOptionBool(file, "f", false, nullptr));
  EXPECT_TRUE(model.saveOption(file, "s", "x", nullptr));
  file.close();
  EXPECT_EQ(read(name),
            "\n[S]\t; c\nc= '\\x01'\ni= -12\nl= -70000\t; n\nq= '''\n"
            "t= ON\nf= OFF\ns= x\n");
}

}  // namespace
