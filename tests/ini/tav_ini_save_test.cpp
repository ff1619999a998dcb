// tav_ini_save_test.cpp - writing the model back: the plain save byte for byte, the atomic save
// and the round trips through the parser.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tav_filename.h"
#include "tav_ini.h"

namespace {

class IniSave : public ::testing::Test {
 protected:
  void SetUp() override {
    directory =
        std::filesystem::temp_directory_path() /
        ("tav_ini_save_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "_" +
         ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::remove_all(directory);
    std::filesystem::create_directories(directory);
  }
  void TearDown() override { std::filesystem::remove_all(directory); }

  std::string path(const char* name) const { return (directory / name).string(); }

  // In text mode: the plain save writes through a text stream, which ends lines with CR LF on
  // Windows.
  static std::string read(const std::string& name) {
    std::ifstream in(name);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
  static void write(const std::string& name, const std::string& text) {
    std::ofstream(name, std::ios::binary) << text;
  }
  // Every section with its options, deleted ones left out, as one comparable text.
  static std::string describe(const TavClIniFile& model) {
    std::string text;
    TavClIniFileSectionCursor sections(model);
    for (sections.setToFirst(); sections.isValid(); sections.setToNext()) {
      if (sections.getSection()[0] == '\0') continue;
      text += std::string("[") + sections.getSection() + "]\n";
      TavClIniFileOptionCursor options(sections);
      for (options.setToFirst(); options.isValid(); options.setToNext()) {
        if (options.getOption()[0] == '\0') continue;
        text += std::string(options.getOption()) + "=<" + options.getValue() + "><" +
                options.getComment() + ">\n";
      }
    }
    return text;
  }

  std::filesystem::path directory;
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
            "\n[S]\na= 1\t; c\nsemi= \"x;y\"\ntab= \"1\\t2\"\nquote= \"say \"hi\";\"\n"
            "blank=  b \n\n[T]\n");

  // The plain format loses what its quirks drop: the empty value, the blanks, the inner quotes.
  TavClIniFile again{TavClFilename(name.c_str())};
  ASSERT_TRUE(again.load(false));
  ASSERT_TRUE(again.getSection("S"));
  const char* value = nullptr;
  EXPECT_FALSE(again.getOption("empty", value));
  ASSERT_TRUE(again.getOption("semi", value));
  EXPECT_STREQ(value, "x;y");
  ASSERT_TRUE(again.getOption("blank", value));
  EXPECT_STREQ(value, "b");
  ASSERT_TRUE(again.getOption("quote", value));
  EXPECT_STREQ(value, "say hi;");
}

TEST_F(IniSave, SecondSaveAppendsAnotherCopyAndStreamSaveReportsItsState) {
  const std::string name = path("twice.ini");
  TavClIniFileSave model{TavClFilename(name.c_str())};
  model.addSection("S");
  ASSERT_TRUE(model.addOption("S", "a", "1"));
  ASSERT_TRUE(model.save());
  ASSERT_TRUE(model.save());
  EXPECT_EQ(read(name), "\n[S]\na= 1\n\n[S]\na= 1\n");

  std::ofstream other(path("other.ini"));
  EXPECT_TRUE(model.save(other));
  std::ofstream closed;
  EXPECT_FALSE(model.save(closed));

  TavClIniFileSave missing{TavClFilename(path("no/such/dir/x.ini").c_str())};
  missing.addSection("S");
  EXPECT_FALSE(missing.save());
}

TEST_F(IniSave, AtomicSaveReadsBackEveryValueExactly) {
  const std::string name = path("exact.ini");
  TavClIniFileSave model{TavClFilename(name.c_str())};
  model.addSection("S");
  const char* const values[] = {
      "",      " lead",   "trail ", "say \"hi\"", "it's",   "$(HOME)/bin", "x;y",
      "\0017", "\x1b[0m", "\\x41",  "'q'",        "\t\r\n", "a\"b'c;d$(e"};
  int index = 0;
  for (const char* value : values) {
    ASSERT_TRUE(model.addOption("S", ("v" + std::to_string(index++)).c_str(), value));
  }
  ASSERT_TRUE(model.addOption("S", "long", std::string(1024, '\x02').c_str()));
  ASSERT_TRUE(model.saveAtomic());

  TavClIniFile again{TavClFilename(name.c_str())};
  ASSERT_TRUE(again.load(true));
  EXPECT_EQ(describe(again), describe(model));
  // No temporary file is left beside the target.
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(directory),
                          std::filesystem::directory_iterator()),
            1);
}

TEST_F(IniSave, RoundTripOfLoadedFilesGivesTheSameModel) {
  const char* const inputs[] = {
      "[S]\na = one ; note\nb = \"x;y\" ; after\nc = 'x'\nd = '\\t'\n",
      "[ Spaced ]\nmax size = 5\n[S]\n[S]\nk = v\n",
      "[S]\na = abc\n   def ; continued\nz =\n",
      "[S]\nq = \"\\x41\\101\" ; AA\nr = \" both \"\ns = back\\slash\n",
  };
  for (const char* input : inputs) {
    SCOPED_TRACE(input);
    const std::string name = path("round.ini");
    TavClIniFileSave first{TavClFilename(name.c_str())};
    ASSERT_TRUE(
        first.loadFromBuffer(input, std::char_traits<char>::length(input), '\n', true, true));
    ASSERT_TRUE(first.saveAtomic());
    TavClIniFile second{TavClFilename(name.c_str())};
    ASSERT_TRUE(second.load(true));
    EXPECT_EQ(describe(second), describe(first));
  }
}

TEST_F(IniSave, FailedAtomicSaveLeavesTheOldFile) {
  const std::string name = path("keep.ini");
  write(name, "old contents\n");
  TavClIniFileSave model{TavClFilename(name.c_str())};
  model.addSection("S");
  ASSERT_TRUE(model.addOption("S", "two words", "v"));  // no line reads back as this name
  EXPECT_FALSE(model.saveAtomic());
  EXPECT_EQ(read(name), "old contents\n");

  TavClIniFileSave nowhere{TavClFilename(path("no/such/dir/x.ini").c_str())};
  nowhere.addSection("S");
  EXPECT_FALSE(nowhere.saveAtomic());
}

}  // namespace

namespace {

TEST_F(IniSave, TypedWritersWriteOneLineEach) {
  const std::string name = path("typed.ini");
  // The writers open the model's own file first, which stays empty here.
  TavClIniFileSave model{TavClFilename(path("model.ini").c_str())};
  std::ofstream file(name);
  EXPECT_TRUE(model.saveSection(file, "S", "c"));
  EXPECT_TRUE(model.saveOption(file, "c", '\x01', nullptr));  // leaves the stream in hexadecimal
  EXPECT_TRUE(model.saveOption(file, "i", -12, ""));
  EXPECT_TRUE(model.saveOption(file, "u", 255u, nullptr));
  EXPECT_TRUE(model.saveOption(file, "l", -70000L, "n"));
  EXPECT_TRUE(model.saveOption(file, "ul", 4000000000UL, nullptr));
  EXPECT_TRUE(model.saveOption(file, "q", '\'', nullptr));
  EXPECT_TRUE(model.saveOptionBool(file, "t", true, nullptr));
  EXPECT_TRUE(model.saveOptionBool(file, "f", false, nullptr));
  EXPECT_TRUE(model.saveOption(file, "s", "x", nullptr));
  file.close();
  EXPECT_EQ(read(name),
            "\n[S]\t; c\nc= '\\x01'\ni= -12\nu= 255\nl= -70000\t; n\nul= 4000000000\nq= '''\n"
            "t= ON\nf= OFF\ns= x\n");
}

}  // namespace
