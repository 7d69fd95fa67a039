#include "persist/profile.h"

#include <gtest/gtest.h>

#include <string>

#include "support/file_bytes.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

class ProfileTest : public ::testing::Test {
 protected:
  testing::TempDir dir;
};

TEST_F(ProfileTest, EveryOptionRoundTrips) {
  SessionSettings s;
  s.undoLevel = 7;
  s.windowShow = show::kNormal;
  s.windowLeft = 10;
  s.windowTop = -20;
  s.windowRight = 800;
  s.windowBottom = 600;
  s.wrapTextInMemoFields = false;
  s.plainTextInMemoFields = true;
  s.whenEnterPressed = 3;
  s.opacity = 85;
  s.autoSaveMinutes = 5;
  s.autoCloseMinutes = 30;
  s.defaultFileFormat = NativeFormat::kBinaryCompressed;
  s.localeChoice = 12;
  s.startFolder = "/home/me/Databases & <more>";
  s.fontName = "DejaVu Sans";
  s.fontColourSet = true;
  s.fontColour = 0x00FF8000;
  s.senderName = "Kelp Dex";
  s.senderAddress = "kelp@example.org";
  s.smtpServer = "smtp.example.org";
  s.smtpPort = 587;
  s.mailUser = "kelp";
  s.mailPassword = "p\xE4ss w\xF6rd";  // letters beyond ASCII travel as Base64 of their bytes
  s.mailPasswordStored = true;
  s.recentFiles = {"/tmp/b.kpx", "/tmp/a.kpx", " /tmp/two  blanks .kpx"};
  s.profileReadOnly = true;
  UserFormatList formats;
  ASSERT_TRUE(formats.Add("0.000 \"kg\"", "Weight"));
  ASSERT_TRUE(formats.Add("0.0   \"  m\"  ", "  Metres  "));
  std::string path = dir.Path("settings.xml");
  ErrorCode error = err::kNone;
  ASSERT_TRUE(SaveProfile(path, s, formats, error)) << int(error);
  std::string text = testing::ReadFileBytes(path);
  EXPECT_NE(text.find("Position=\"10 -20 800 600\""), std::string::npos);
  EXPECT_NE(text.find("MD5=\"\" ReadOnly=\"Yes\""), std::string::npos);
  EXPECT_EQ(text.find("p\xC3\xA4ss"), std::string::npos);  // the password is not in clear

  SessionSettings back;
  UserFormatList backFormats;
  ASSERT_TRUE(LoadProfile(path, back, backFormats, error)) << int(error);
  EXPECT_EQ(back.undoLevel, 7);
  EXPECT_EQ(back.windowTop, -20);
  EXPECT_EQ(back.windowShow, show::kNormal);
  EXPECT_FALSE(back.wrapTextInMemoFields);
  EXPECT_TRUE(back.plainTextInMemoFields);
  EXPECT_EQ(back.whenEnterPressed, 3);
  EXPECT_EQ(back.opacity, 85);
  EXPECT_EQ(back.autoSaveMinutes, 5);
  EXPECT_EQ(back.autoCloseMinutes, 30);
  EXPECT_EQ(back.defaultFileFormat, NativeFormat::kBinaryCompressed);
  EXPECT_EQ(back.localeChoice, 12);
  EXPECT_EQ(back.startFolder, s.startFolder);
  EXPECT_EQ(back.fontName, "DejaVu Sans");
  EXPECT_EQ(back.fontColour, 0x00FF8000u);
  EXPECT_EQ(back.smtpPort, 587);
  EXPECT_EQ(back.mailUser, "kelp");
  EXPECT_EQ(back.mailPassword, s.mailPassword);
  EXPECT_TRUE(back.mailPasswordStored);
  EXPECT_EQ(back.recentFiles, s.recentFiles);
  EXPECT_TRUE(back.profileReadOnly);
  // Blank runs in paths and user formats are part of them.
  ASSERT_EQ(backFormats.UserFormats(),
            (std::vector<std::string>{"0.000 \"kg\"", "0.0   \"  m\"  "}));
  EXPECT_EQ(backFormats.nameAt(backFormats.size() - 2), "Weight");
  EXPECT_EQ(backFormats.nameAt(backFormats.size() - 1), "  Metres  ");
}

TEST_F(ProfileTest, TheDefaultFormTravelsAsTwoFlags) {
  std::string path = dir.Path("format.xml");
  ErrorCode error = err::kNone;
  for (NativeFormat format : {NativeFormat::kXml, NativeFormat::kXmlCompressed,
                              NativeFormat::kBinary, NativeFormat::kBinaryCompressed}) {
    SessionSettings s;
    s.defaultFileFormat = format;
    ASSERT_TRUE(SaveProfile(path, s, UserFormatList(), error));
    SessionSettings back;
    UserFormatList formats;
    ASSERT_TRUE(LoadProfile(path, back, formats, error));
    EXPECT_EQ(back.defaultFileFormat, format) << int(format);
  }
  // A value that is none of the four is written as plain XML.
  SessionSettings odd;
  odd.defaultFileFormat = NativeFormat::kDefault;
  ASSERT_TRUE(SaveProfile(path, odd, UserFormatList(), error));
  EXPECT_NE(testing::ReadFileBytes(path).find("Xml=\"Yes\" Compressed=\"No\""), std::string::npos);
  odd.defaultFileFormat = static_cast<NativeFormat>(9);
  ASSERT_TRUE(SaveProfile(path, odd, UserFormatList(), error));
  SessionSettings back;
  back.defaultFileFormat = NativeFormat::kBinary;
  UserFormatList formats;
  ASSERT_TRUE(LoadProfile(path, back, formats, error));
  EXPECT_EQ(back.defaultFileFormat, NativeFormat::kXml);
}

TEST_F(ProfileTest, WindowWordsEmptyListsAndAMissingPassword) {
  SessionSettings s;
  s.windowShow = show::kMaximized;
  s.mailUser = "someone";
  std::string path = dir.Path("p.xml");
  ErrorCode error = err::kNone;
  ASSERT_TRUE(SaveProfile(path, s, UserFormatList(), error));
  std::string text = testing::ReadFileBytes(path);
  EXPECT_NE(text.find("Position=\"Maximize\""), std::string::npos);
  EXPECT_EQ(text.find("UserNumericFormat"), std::string::npos);
  EXPECT_EQ(text.find("Password"), std::string::npos);
  SessionSettings back;
  back.mailPasswordStored = true;
  UserFormatList formats;
  ASSERT_TRUE(LoadProfile(path, back, formats, error));
  EXPECT_EQ(back.windowShow, show::kMaximized);
  EXPECT_FALSE(back.mailPasswordStored);
  EXPECT_EQ(back.mailUser, "someone");
}

TEST_F(ProfileTest, MissingElementsKeepTheirValuesAndOrderMatters) {
  std::string path = dir.Path("short.xml");
  testing::WriteFileBytes(path,
                          "<?xml version=\"1.0\"?>\r\n<Profile ReadOnly=\"No\">\r\n"
                          "\t<Opacity>60</Opacity>\r\n</Profile>\r\n");
  SessionSettings s;
  s.undoLevel = 33;
  s.recentFiles = {"kept?"};
  UserFormatList formats;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(LoadProfile(path, s, formats, error));
  EXPECT_EQ(s.opacity, 60);
  EXPECT_EQ(s.undoLevel, 33);
  EXPECT_TRUE(s.recentFiles.empty());  // the list is replaced, here by none

  // AutoSave stands before Opacity: out of order, it is still there at the closing tag.
  testing::WriteFileBytes(path,
                          "<?xml version=\"1.0\"?>\r\n<Profile>\r\n"
                          "\t<Opacity>60</Opacity>\r\n\t<AutoSave>5</AutoSave>\r\n"
                          "\t<UndoLevel>4</UndoLevel>\r\n</Profile>\r\n");
  int line = 0;
  EXPECT_FALSE(LoadProfile(path, s, formats, error, &line));
  EXPECT_EQ(error, err::kXmlUnexpectedElement);
  EXPECT_EQ(line, 5);
  testing::WriteFileBytes(path,
                          "<?xml version=\"1.0\"?><Profile><Opacity>lots</Opacity></Profile>");
  EXPECT_FALSE(LoadProfile(path, s, formats, error));
  EXPECT_EQ(error, err::kXmlInvalidData);
  EXPECT_FALSE(LoadProfile(dir.Path("none.xml"), s, formats, error));
  EXPECT_EQ(error, err::kFileOpenRead);
}

}  // namespace
}  // namespace kelpdex
