// The one small number by which every failure of the logic is told. A routine that fails returns
// false and leaves its code; only the top of a command shows it.
#pragma once

#include <cstdint>

namespace kelpdex {

using ErrorCode = uint8_t;

// Named codes, by family: images and containers from 1, workbook and printing from 21, charts
// from 50, files from 60, image codecs from 80, XML from 90.
namespace err {
constexpr ErrorCode kNone = 0;
constexpr ErrorCode kImageOutOfMemory = 1;
constexpr ErrorCode kTooManyImages = 2;
constexpr ErrorCode kUnsupportedImageSource = 3;
constexpr ErrorCode kUnsupportedImageFormat = 4;
constexpr ErrorCode kContainerOutOfMemory = 10;
constexpr ErrorCode kImageNotOnList = 11;
constexpr ErrorCode kTooManyContainerObjects = 12;
constexpr ErrorCode kOutOfMemory = 21;
constexpr ErrorCode kNeedsOneTable = 22;
constexpr ErrorCode kInvalidNodePath = 23;
constexpr ErrorCode kInvalidCacheIndex = 24;
constexpr ErrorCode kNoTableSelected = 25;
constexpr ErrorCode kTooManyStyles = 26;
constexpr ErrorCode kTooManyDropDownLists = 27;
constexpr ErrorCode kNoPagesToPrint = 28;
constexpr ErrorCode kInvalidPageRange = 29;
constexpr ErrorCode kZoomTooSmall = 30;
constexpr ErrorCode kMarginTooSmall = 31;
constexpr ErrorCode kNoPrinter = 32;
constexpr ErrorCode kInvalidBinaryFormat = 33;
constexpr ErrorCode kNoEmptyColumns = 34;
constexpr ErrorCode kNoEmptyRows = 35;
constexpr ErrorCode kCryptoKeyFailed = 36;
constexpr ErrorCode kInvalidPassword = 37;
constexpr ErrorCode kClipboardBusy = 38;
constexpr ErrorCode kTooManyRecords = 42;
constexpr ErrorCode kTooManySortKeys = 43;
constexpr ErrorCode kInvalidDatabase = 44;
constexpr ErrorCode kInvalidExcelDatabase = 45;
constexpr ErrorCode kNoLabels = 46;
constexpr ErrorCode kChartOutOfMemory = 50;
constexpr ErrorCode kChartNeedsArray = 51;
constexpr ErrorCode kChartStackedMismatch = 52;
constexpr ErrorCode kChartAxisNumbers = 53;
constexpr ErrorCode kTooManyAxes = 54;
constexpr ErrorCode kTooManySeries = 55;
constexpr ErrorCode kTooManyGridlines = 56;
constexpr ErrorCode kFileOpenRead = 60;
constexpr ErrorCode kFileOpenWrite = 61;
constexpr ErrorCode kFileClose = 62;
constexpr ErrorCode kFileSeek = 63;
constexpr ErrorCode kFileRead = 64;
constexpr ErrorCode kFileWrite = 65;
constexpr ErrorCode kFileDelete = 66;
constexpr ErrorCode kFileInfo = 67;
constexpr ErrorCode kFileBuffer = 68;
constexpr ErrorCode kFileInUse = 69;
constexpr ErrorCode kDecrypt = 70;
constexpr ErrorCode kEncrypt = 71;
constexpr ErrorCode kBinaryFields = 72;
constexpr ErrorCode kFolderPath = 73;
constexpr ErrorCode kSideFileTooLarge = 74;
constexpr ErrorCode kCodecOutOfMemory = 80;
constexpr ErrorCode kJpegLibraryMissing = 81;
constexpr ErrorCode kJpegLibraryInit = 82;
constexpr ErrorCode kJpegRead = 83;
constexpr ErrorCode kJpegWrite = 84;
constexpr ErrorCode kJpegChannels = 85;
constexpr ErrorCode kInvalidBitmap = 86;
constexpr ErrorCode kPngRead = 87;
constexpr ErrorCode kPngWrite = 88;
constexpr ErrorCode kXmlOutOfMemory = 90;
constexpr ErrorCode kXmlUnexpectedElement = 91;
constexpr ErrorCode kXmlInvalidAttribute = 92;
constexpr ErrorCode kXmlMissingAttribute = 93;
constexpr ErrorCode kXmlInvalidData = 94;
constexpr ErrorCode kXmlEncoding = 95;
constexpr ErrorCode kTooManyFields = 100;
// Left by a failed write during a column conversion; it has no text of its own.
constexpr ErrorCode kColumnConversionWrite = 128;
}  // namespace err

// The message of a code; "No error" for 0 and for every number without an entry.
const char* ErrorText(ErrorCode code);

// True for the XML reader's codes, which are shown with the line they were found on.
inline bool IsXmlLineError(ErrorCode code) {
  return code >= 90 && code <= 94;
}

}  // namespace kelpdex
