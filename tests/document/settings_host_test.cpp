#include "document/settings_host.h"

#include <gtest/gtest.h>

#include "core/locale_settings.h"
#include "core/reporting.h"
#include "persist/profile.h"
#include "platform/os.h"
#include "support/fake_locale_provider.h"
#include "support/file_bytes.h"
#include "support/recording_prompter.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

// The settings host with the OS swapped for a folder of the test's own.
class TestHost : public ProfileProcessHost {
 public:
  platform::LocaleProvider& Locales() override { return locales; }
  SettingsPathFacts PathFacts() override {
    SettingsPathFacts facts;
    facts.userSettingsFolder = folder;
    facts.executablePath = "/usr/bin/kelpdex";
    facts.systemPrefixes = {"/usr/"};
    facts.fileExists = [](const std::string& p) { return platform::FileExists(p); };
    return facts;
  }
  int ServerTimeOutMs() override { return 20; }
  int ServerPauseMs() override { return 0; }

  testing::TempDir dir;
  std::string folder = dir.Path("config/Kelpdex");
  testing::FakeLocaleProvider locales;
};

class SettingsHostTest : public ::testing::Test {
 protected:
  SettingsHostTest() : scope(prompter) {}
  void TearDown() override { currentLocale = genericLocale; }

  SessionSettings RunOnce() {
    SessionSettings settings;
    RunProcess("", show::kDefault, host, settings);
    return settings;
  }
  std::string SettingsFile() const { return platform::JoinPath(host.folder, "settings.xml"); }

  testing::RecordingPrompter prompter;
  testing::ScopedPrompter scope;
  TestHost host;
};

TEST_F(SettingsHostTest, AFirstStartWritesTheDefaultsAndTheNextStartReadsChanges) {
  RunOnce();
  ASSERT_TRUE(platform::FileExists(SettingsFile()));
  SessionSettings written;
  UserFormatList formats;
  ErrorCode error = err::kNone;
  ASSERT_TRUE(LoadProfile(SettingsFile(), written, formats, error));
  EXPECT_EQ(written.undoLevel, 20);
  EXPECT_EQ(written.defaultFileFormat, NativeFormat::kXml);

  written.undoLevel = 7;
  written.recentFiles = {"/data/a.kpx"};
  ASSERT_TRUE(SaveProfile(SettingsFile(), written, formats, error));
  SessionSettings second = RunOnce();
  EXPECT_EQ(second.undoLevel, 7);
  EXPECT_EQ(second.recentFiles, std::vector<std::string>{"/data/a.kpx"});
  EXPECT_EQ(second.settingsPath, SettingsFile());
  EXPECT_TRUE(prompter.boxes.empty());
}

TEST_F(SettingsHostTest, ABrokenFileIsSilentAtStartAndShownByCommand) {
  // UndoLevel behind AutoSave is out of order: the reader fails at the closing Profile.
  std::string broken =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Profile MD5=\"\" ReadOnly=\"No\">\n"
      "\t<AutoSave>9</AutoSave>\n\t<UndoLevel>3</UndoLevel>\n</Profile>\n";
  ASSERT_TRUE(platform::CreateFolder(host.folder));
  testing::WriteFileBytes(SettingsFile(), broken);
  SessionSettings started = RunOnce();
  EXPECT_TRUE(prompter.boxes.empty());
  EXPECT_EQ(started.autoSaveMinutes, 0);  // the defaults stand, nothing half-read
  EXPECT_EQ(started.undoLevel, 20);

  std::string profile = host.dir.Write("profile.xml", broken);
  SessionSettings settings;
  settings.undoLevel = 11;
  UserFormatList formats;
  size_t formatCount = formats.size();
  EXPECT_FALSE(LoadProfileFile(profile, settings, formats, false));
  ASSERT_EQ(prompter.boxes.size(), 1u);
  EXPECT_EQ(prompter.boxes[0].text, ErrorTextAtLine(err::kXmlUnexpectedElement, 4));
  EXPECT_EQ(settings.undoLevel, 11);
  EXPECT_EQ(settings.autoSaveMinutes, 0);
  EXPECT_EQ(formats.size(), formatCount);

  // Saving by command into a folder that does not exist is shown too.
  EXPECT_FALSE(SaveProfileFile(host.dir.Path("none/p.xml"), settings, formats, true));
  EXPECT_EQ(prompter.boxes.size(), 2u);
}

}  // namespace
}  // namespace kelpdex
