// Everything that outlives a document. The settings module reads and writes it; the process
// entry and the frame use it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/document_kind.h"

namespace kelpdex {

// Show commands, with the values Windows gives them.
namespace show {
constexpr int kNormal = 1;
constexpr int kMaximized = 3;
constexpr int kShow = 5;
constexpr int kMinimize = 6;
constexpr int kDefault = 10;
}  // namespace show

struct SessionSettings {
  // The settings file in force. Loading or saving a profile under another name leaves it alone.
  // A string rather than a fixed buffer: POSIX paths are not bounded by 260 bytes.
  std::string settingsPath;
  uint8_t localeChoice = 0;
  int32_t windowLeft = 0;
  int32_t windowTop = 0;
  int32_t windowRight = 0;
  int32_t windowBottom = 0;
  int32_t windowShow = show::kNormal;
  // The form a save writes when the document names none.
  NativeFormat defaultFileFormat = NativeFormat::kXml;

  // Options, with the values a first start shows.
  int32_t undoLevel = 20;
  bool wrapTextInMemoFields = true;
  bool displayThumbnails = true;
  bool plainTextInMemoFields = false;
  bool displayImageLabels = true;
  int32_t whenEnterPressed = 1;  // move down by one record
  int32_t opacity = 100;         // percent
  int32_t autoSaveMinutes = 0;   // 0 never
  int32_t autoCloseMinutes = 0;
  std::string startFolder;
  std::string fontName;
  bool fontColourSet = false;
  uint32_t fontColour = 0;  // COLORREF

  // Mail merge.
  std::string senderName;
  std::string senderAddress;
  std::string smtpServer;
  int32_t smtpPort = 25;
  std::string mailUser;
  std::string mailPassword;
  bool mailPasswordStored = false;

  // Newest first, at most recentFileLimit of them.
  std::vector<std::string> recentFiles;
  // The menu has room for 16; no option sets it, and 8 keeps the File menu short.
  size_t recentFileLimit = 8;
  // The filters last chosen in the Open and Save As dialogs, for this run only.
  FileFilter openFilter = FileFilter::kDefault;
  FileFilter saveFilter = FileFilter::kDefault;
  // The profile's own flag, kept as it was read.
  bool profileReadOnly = false;
};

// The process's one instance.
SessionSettings& Session();

}  // namespace kelpdex
