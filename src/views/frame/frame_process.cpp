#include "views/frame/frame_process.h"

#include <QApplication>

#include "platform/shell_registration.h"
#include "views/frame/main_frame.h"

namespace kelpdex::views {

namespace {

class QtFrame : public Frame {
 public:
  explicit QtFrame(Workbook& book) : book_(book) {}
  bool Create(const SessionSettings&) override {
    window_ = std::make_unique<MainFrame>(book_, Session());
    window_->RestoreWindowState();
    return true;
  }
  void OpenFromCommandLine(const std::string& path) override {
    window_->session().OpenFromCommandLine(path);
  }
  void Show(int showCommand) override {
    if (showCommand == show::kMaximized) {
      window_->showMaximized();
    } else if (showCommand == show::kMinimize) {
      window_->showMinimized();
    } else {
      window_->show();
    }
  }
  int RunLoop() override {
    int code = QApplication::exec();
    // The frame goes before the process writes the settings it stored at close.
    window_.reset();
    return code;
  }

 private:
  Workbook& book_;
  std::unique_ptr<MainFrame> window_;
};

}  // namespace

DesktopHost::DesktopHost(Workbook& book, std::string executablePath)
    : book_(book), executable_(std::move(executablePath)) {}

std::unique_ptr<Frame> DesktopHost::CreateFrame() {
  return std::make_unique<QtFrame>(book_);
}

bool DesktopHost::RegisterShell() {
  return platform::RegisterShellIntegration(executable_);
}

bool DesktopHost::UnregisterShell() {
  return platform::UnregisterShellIntegration();
}

}  // namespace kelpdex::views
