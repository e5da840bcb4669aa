#include "app/Settings.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "sequence/Messagelanguage.h"
#include "tests/TestSupport.h"

namespace tavena {
namespace {

using test::ReadFile;
using test::TempDir;
using test::WriteFile;

TEST(Settings, WritesEveryKeyInTableOrderAndReadsItBack) {
  SettingsRecord out;
  out.list_path = "C:\\logi \xB9\xE6";  // "ąć" in Windows-1250
  out.list = {1, 2, 300, 400, true};
  out.main = {-5, 7, 1000, 600, false};
  out.pod_file = "firma.pod";
  out.edit_seq.showing = true;
  out.sender_path = "/home/serwis";
  out.font_info = {"Tahoma", 0x696A4F, 12, kFontBold | kFontUnderline};
  out.font_wind.colour = -1;
  TempDir dir;
  ASSERT_TRUE(SaveSettings(dir.file("config.tav"), out));
  const std::string text = ReadFile(dir.file("config.tav"));
  EXPECT_TRUE(
      text.starts_with("ListPath=C:\\logi \xB9\xE6\r\nListTop=1\r\nListLeft=2\r\nListWidth=300\r\n"
                       "ListHeight=400\r\nListShowing=1\r\nMainTop="));
  EXPECT_NE(text.find("\r\nMainTop=-5\r\nMainLeft=7\r\nMainWidth=1000\r\nMainHeight=600\r\n"
                      "PodPath=\r\nPodFile=firma.pod\r\nPodTop=0\r\n"),
            std::string::npos);
  EXPECT_EQ(text.find("MainShowing"), std::string::npos);
  EXPECT_NE(text.find("\r\nEditSeqShowing=1\r\nSenderPath=/home/serwis\r\n"), std::string::npos);
  EXPECT_NE(text.find("\r\nFontInfoSet=Tahoma\r\nFontInfoCol=6908495\r\nFontInfoSize=12\r\n"
                      "FontInfoStyle=5\r\n"),
            std::string::npos);
  EXPECT_TRUE(
      text.ends_with("FontWindSet=\r\nFontWindCol=-1\r\nFontWindSize=0\r\nFontWindStyle=0\r\n"));
  EXPECT_FALSE(std::filesystem::exists(dir.file("config.tav.new")));
  // A save that cannot write its new file leaves the old one as it was.
  std::filesystem::create_directory(dir.file("config.tav.new"));
  SettingsRecord changed = out;
  changed.list.top = 99;
  EXPECT_FALSE(SaveSettings(dir.file("config.tav"), changed));
  EXPECT_EQ(ReadFile(dir.file("config.tav")), text);

  SettingsRecord in;
  ASSERT_TRUE(LoadSettings(dir.file("config.tav"), in));
  EXPECT_EQ(in.list_path, out.list_path);
  EXPECT_EQ(in.main.top, -5);
  EXPECT_TRUE(in.edit_seq.showing);
  EXPECT_EQ(in.font_info.style, 5);
  EXPECT_EQ(in.font_wind.colour, -1);
}

TEST(Settings, ReadingRulesAndFontDefaults) {
  TempDir dir;
  const std::string path = dir.file("config.tav");
  // Flags are "greater than 0", numbers keep 32 bits, a value keeps its "=" and blanks.
  WriteFile(path,
            "ListTop=10\r\nColour=red\r\n   ListLeft=20\r\nListShowing=-1\r\n"
            "PodShowing=7\r\nMainTop=4294967297\r\nMainLeft=abc\r\nPodPath=a=b \r\n");
  SettingsRecord r;
  r.pod.showing = false;
  r.list.showing = true;
  ASSERT_TRUE(LoadSettings(path, r));
  // Top, left, showing of the monitor; the list's showing; top and left of the main window.
  EXPECT_EQ((std::vector<int64_t>{r.list.top, r.list.left, r.list.showing, r.pod.showing,
                                  r.main.top, r.main.left}),
            (std::vector<int64_t>{10, 20, 0, 1, 1, 0}));
  EXPECT_EQ(r.pod_path, "a=b ");

  // A line without "=" abandons the rest (an entity file skips it).
  WriteFile(path, "ListTop=3\nno equals sign\nListLeft=4\n");
  SettingsRecord stop;
  ASSERT_TRUE(LoadSettings(path, stop));
  EXPECT_EQ(stop.list.top, 3);
  EXPECT_EQ(stop.list.left, 0);

  SettingsRecord missing;
  missing.list.top = 77;
  EXPECT_FALSE(LoadSettings(dir.file("none.tav"), missing));
  EXPECT_EQ(missing.list.top, 77);

  // Font defaults fill only what is missing.
  r = SettingsRecord{};
  r.font_info = {"", 0x123456, 12, kFontUnderline};  // empty face, size 12 kept
  r.font_edit = {"Courier New", 0xFF, 0, 0};         // face kept, size defaulted
  ApplyFontDefaults(r);
  const auto font = [](const FontSetting& f) {
    return f.face + " " + std::to_string(f.colour) + " " + std::to_string(f.size) + " " +
           std::to_string(f.style);
  };
  EXPECT_EQ(font(r.font_info), "Arial 6908495 12 3");  // bold and italic
  EXPECT_EQ(font(r.font_edit), "Courier New 255 10 0");
  EXPECT_EQ(font(r.font_wind), "Arial -1 10 0");
}

TEST(Settings, FolderAndLanguageFile) {
  TempDir dir;
  test::ScopedEnv xdg("XDG_CONFIG_HOME", dir.str());
  const std::string folder = SettingsFolder("/opt/tavena");
  EXPECT_EQ(folder, dir.str() + "/tavena/");
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  WriteFile(folder + "language.tav", "1\r\n");
  ReadMessageLanguage(folder);
  EXPECT_EQ(MessageLanguage, 1);
  WriteFile(folder + "language.tav", "x");
  ReadMessageLanguage(folder);
  EXPECT_EQ(MessageLanguage, 1);  // no digit: unchanged
  WriteFile(folder + "language.tav", "0");
  ReadMessageLanguage(folder);
  EXPECT_EQ(MessageLanguage, 0);
}

}  // namespace
}  // namespace tavena
