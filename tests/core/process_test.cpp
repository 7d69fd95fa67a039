#include <atomic>
#include <chrono>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/locale_settings.h"
#include "core/process.h"
#include "core/server_module.h"
#include "platform/locale_table.h"
#include "platform/os.h"
#include "support/fake_locale_provider.h"
#include "support/temp_dir.h"

namespace kelpdex {
namespace {

using namespace std::chrono_literals;

struct FrameLog {
  bool created = false;
  std::vector<std::string> opened;
  int shownWith = -1;
};

class FakeFrame : public Frame {
 public:
  FakeFrame(FrameLog& log, bool creatable) : log_(log), creatable_(creatable) {}
  bool Create(const SessionSettings&) override { return log_.created = creatable_; }
  void OpenFromCommandLine(const std::string& path) override { log_.opened.push_back(path); }
  void Show(int showCommand) override { log_.shownWith = showCommand; }
  int RunLoop() override { return 7; }

 private:
  FrameLog& log_;
  bool creatable_;
};

class FakeHost : public ProcessHost {
 public:
  bool LoadSettings(const std::string& path, SessionSettings& settings, bool startUp) override {
    loaded.push_back(path);
    EXPECT_TRUE(startUp);
    settings.localeChoice = 2;
    settings.windowShow = savedShow;
    return true;
  }
  bool SaveSettings(const std::string& path, const SessionSettings&) override {
    saved.push_back(path);
    return true;
  }
  std::unique_ptr<Frame> CreateFrame() override {
    ++framesAsked;
    return std::make_unique<FakeFrame>(frame, frameCreatable);
  }
  platform::LocaleProvider& Locales() override { return locales; }
  SettingsPathFacts PathFacts() override {
    SettingsPathFacts facts;
    facts.userSettingsFolder = folder;
    facts.executablePath = "/usr/bin/kelpdex";
    facts.systemPrefixes = {"/usr/"};
    facts.fileExists = [this](const std::string& p) { return existing.count(p) != 0; };
    return facts;
  }
  bool RegisterShell() override {
    ++registrations;
    return registrationWorks;
  }
  bool UnregisterShell() override {
    ++unregistrations;
    return registrationWorks;
  }
  int ServerTimeOutMs() override { return 20; }
  int ServerPauseMs() override { return 0; }

  testing::TempDir dir;
  std::string folder = dir.Path("config/Kelpdex");
  std::set<std::string> existing;
  testing::FakeLocaleProvider locales;
  FrameLog frame;
  bool frameCreatable = true;
  bool registrationWorks = true;
  int savedShow = show::kNormal;
  int framesAsked = 0;
  int registrations = 0;
  int unregistrations = 0;
  std::vector<std::string> loaded;
  std::vector<std::string> saved;
};

class ProcessTest : public ::testing::Test {
 protected:
  void TearDown() override { currentLocale = genericLocale; }
  int Run(const std::string& line, int showCommand = show::kDefault) {
    SessionSettings settings;
    return RunProcess(line, showCommand, host_, settings);
  }
  FakeHost host_;
};

TEST_F(ProcessTest, RegistrationSwitchesEndBeforeSettingsAndFrame) {
  EXPECT_EQ(Run("-RegServer"), kExitOk);
  EXPECT_EQ(Run("/UNREGSERVER"), kExitOk);
  EXPECT_EQ(Run("-Uninstall"), kExitOk);
  host_.registrationWorks = false;
  EXPECT_EQ(Run("-regserver"), kExitRegistrationFailed);
  EXPECT_EQ(host_.registrations, 2);
  EXPECT_EQ(host_.unregistrations, 2);
  EXPECT_EQ(host_.framesAsked, 0);
  EXPECT_TRUE(host_.loaded.empty());
  EXPECT_TRUE(host_.saved.empty());
}

TEST_F(ProcessTest, InteractiveRunOpensTheLineAndSavesSettingsAtExit) {
  std::string settingsFile = platform::JoinPath(host_.folder, "settings.xml");
  // The per-user folder does not exist yet; it is created at exit.
  host_.existing.insert(settingsFile);
  host_.locales.SetLocale(platform::kLocaleUserDefault, ",", ".", ".", ":", "1", "1", "kr");
  EXPECT_EQ(Run("  my-file.kpx"), 7);
  EXPECT_EQ(host_.loaded, std::vector<std::string>{settingsFile});
  EXPECT_EQ(host_.frame.opened, std::vector<std::string>{"my-file.kpx"});
  // The loaded settings chose the user's default locale.
  EXPECT_EQ(currentLocale.decimalSeparator, ',');
  EXPECT_EQ(host_.saved, std::vector<std::string>{settingsFile});
}

TEST_F(ProcessTest, SettingsFolderThatCannotBeMadeIsSkippedSilently) {
  host_.dir.Write("config", "a file where the folder should be");
  EXPECT_EQ(Run("file.kpx"), 7);
  EXPECT_TRUE(host_.saved.empty());
}

TEST_F(ProcessTest, NoSettingsFileMeansDefaultsAndNoOpenWithoutAPath) {
  EXPECT_EQ(Run(""), 7);
  EXPECT_TRUE(host_.loaded.empty());
  EXPECT_TRUE(host_.frame.opened.empty());
  EXPECT_EQ(host_.frame.shownWith, show::kDefault);
}

TEST_F(ProcessTest, FrameThatCannotBeCreatedEndsWithZero) {
  host_.frameCreatable = false;
  EXPECT_EQ(Run("file.kpx"), 0);
  EXPECT_TRUE(host_.frame.opened.empty());
}

TEST_F(ProcessTest, AutomationStartsNoFrameAndEndsWhenIdle) {
  auto done = std::async(std::launch::async, [this] { return Run("-Automation"); });
  ASSERT_EQ(done.wait_for(10s), std::future_status::ready) << "the idle server never quit";
  EXPECT_EQ(done.get(), 0);
  EXPECT_EQ(host_.framesAsked, 0);
  EXPECT_TRUE(host_.frame.opened.empty());
}

TEST(ChooseShowCommand, SavedMaximisedOrMinimisedReplacesOnlyPlainRequests) {
  EXPECT_EQ(ChooseShowCommand(show::kMaximized, show::kDefault), show::kMaximized);
  EXPECT_EQ(ChooseShowCommand(show::kMinimize, show::kShow), show::kMinimize);
  EXPECT_EQ(ChooseShowCommand(show::kMaximized, show::kNormal), show::kMaximized);
  EXPECT_EQ(ChooseShowCommand(show::kMaximized, 7), 7);
  EXPECT_EQ(ChooseShowCommand(show::kNormal, show::kDefault), show::kDefault);
}

TEST(ServerModule, HeldLockKeepsTheServerAliveUntilReleased) {
  ServerModule server(10, 0);
  server.StartMonitor();
  server.Lock();
  std::atomic<bool> quit{false};
  std::thread loop([&] {
    server.RunUntilQuit();
    quit = true;
  });
  server.SetShutdownEvent();
  std::this_thread::sleep_for(200ms);
  EXPECT_FALSE(quit) << "quit while a lock was held";
  server.Unlock();
  for (int i = 0; i < 500 && !quit; ++i) std::this_thread::sleep_for(10ms);
  EXPECT_TRUE(quit);
  if (!quit) server.PostQuit(0);
  loop.join();
}

TEST(ServerModule, TerminateStopsAMonitorThatNeverWasSignalled) {
  ServerModule server(10, 0);
  server.StartMonitor();
  server.Terminate();
  server.PostQuit(3);
  EXPECT_EQ(server.RunUntilQuit(), 3);
}

}  // namespace
}  // namespace kelpdex
