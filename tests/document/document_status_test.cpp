#include "document/document_status.h"

#include <gtest/gtest.h>

#include "document/recent_files.h"
#include "support/format_locales.h"

namespace kelpdex {
namespace {

TEST(DocumentStatusTest, TitleNamesTheFileOrANewDatabase) {
  Workbook book;
  EXPECT_EQ(WindowTitle(book, false), "Kelpdex");
  EXPECT_EQ(WindowTitle(book, true), "New Database - Kelpdex");
  book.fileName = "/home/ann/stock/Parts.kpx";
  book.modified = true;  // no asterisk: the title tells the name only
  EXPECT_EQ(WindowTitle(book, true), "Parts.kpx - Kelpdex");
}

TEST(DocumentStatusTest, SizesChangeUnitAtEachThousandTwentyFour) {
  EXPECT_EQ(SizeText(0, genericLocale), "0 bytes");
  EXPECT_EQ(SizeText(1023, genericLocale), "1023 bytes");
  EXPECT_EQ(SizeText(1024, genericLocale), "1.00 KB");
  EXPECT_EQ(SizeText(1536, testing::kGermanLocale), "1,50 KB");
  EXPECT_EQ(SizeText(1024 * 1024 - 1, genericLocale), "1024.00 KB");
  EXPECT_EQ(SizeText(5 * 1024 * 1024 + 512 * 1024, genericLocale), "5.50 MB");
}

TEST(DocumentStatusTest, StatusTellsFormatSizeAndLastSave) {
  Workbook book;
  DocumentSizes sizes;
  sizes.document = true;
  sizes.documentBytes = 2048;
  book.lastSavedAt = "2026-11-21T09:05:07";
  book.lastSavedBy = "ann";
  EXPECT_EQ(DocumentStatusText(book, NativeFormat::kBinaryCompressed, sizes, genericLocale),
            "Format: Binary, compressed;    Size: 2.00 KB;    Last saved: 11/21/2026 09:05:07 "
            "by ann");
  book.fileFormat = NativeFormat::kXml;
  sizes.sideFile = true;
  sizes.sideFileBytes = 1024 * 1024;
  EXPECT_EQ(
      DocumentStatusText(book, NativeFormat::kBinaryCompressed, sizes, testing::kGermanLocale),
      "Format: Xml;    Size: 1,00 MB (2,00 KB);    Last saved: 21.11.2026 09:05:07 by ann");
  // Excel files show size and save; the other foreign kinds only their format.
  book.openKind = DocumentKind::kExcelXml;
  EXPECT_EQ(DocumentStatusText(book, NativeFormat::kBinaryCompressed, sizes, genericLocale)
                .rfind("Format: Excel 2003 XML;    Size: ", 0),
            0u);
  book.openKind = DocumentKind::kFoxPro;
  EXPECT_EQ(DocumentStatusText(book, NativeFormat::kBinaryCompressed, sizes, genericLocale),
            "Format: Foxpro");
  // A document never saved has no size and no save to tell.
  book.openKind = DocumentKind::kNative;
  book.lastSavedAt.clear();
  EXPECT_EQ(DocumentStatusText(book, NativeFormat::kBinary, DocumentSizes(), genericLocale),
            "Format: Xml");
  // A default outside the four forms is written as XML, and said so.
  book.fileFormat = NativeFormat::kDefault;
  EXPECT_EQ(DocumentStatusText(book, static_cast<NativeFormat>(9), DocumentSizes(), genericLocale),
            "Format: Xml");
}

TEST(RecentFilesTest, NewestFirstWithoutRepeatsUpToTheLimit) {
  SessionSettings settings;
  EXPECT_EQ(RecentFileMenu(settings), std::vector<std::string>{"(empty)"});
  settings.recentFileLimit = 3;
  AddRecentFile(settings, "/a.kpx");
  AddRecentFile(settings, "/b.kpx");
  AddRecentFile(settings, "/c.kpx");
  AddRecentFile(settings, "/a.kpx");
  EXPECT_EQ(settings.recentFiles, (std::vector<std::string>{"/a.kpx", "/c.kpx", "/b.kpx"}));
  AddRecentFile(settings, "/d.kpx");
  EXPECT_EQ(settings.recentFiles, (std::vector<std::string>{"/d.kpx", "/a.kpx", "/c.kpx"}));
  EXPECT_EQ(RecentFileMenu(settings),
            (std::vector<std::string>{"&1 /d.kpx", "&2 /a.kpx", "&3 /c.kpx"}));
}

TEST(RecentFilesTest, LongPathsLoseTheirMiddleFolders) {
#ifdef _WIN32
  GTEST_SKIP() << "POSIX path text";
#else
  EXPECT_EQ(ShortenPath("/home/ann/a.kpx", 40), "/home/ann/a.kpx");
  EXPECT_EQ(ShortenPath("/home/ann/projects/2026/stock/parts.kpx", 30),
            "/home/.../2026/stock/parts.kpx");
  EXPECT_EQ(ShortenPath("/home/ann/projects/2026/stock/parts.kpx", 29),
            "/home/.../stock/parts.kpx");
  EXPECT_EQ(ShortenPath("/home/ann/projects/2026/stock/parts.kpx", 22), "/home/.../parts.kpx");
  EXPECT_EQ(ShortenPath("/home/ann/a-very-long-database-name.kpx", 20),
            "a-very-long-database-name.kpx");
  for (size_t width = 10; width < 45; ++width) {
    std::string shown = ShortenPath("/home/ann/projects/2026/stock/parts.kpx", width);
    EXPECT_NE(shown.find("parts.kpx"), std::string::npos) << width;
    EXPECT_TRUE(shown.size() <= width || shown == "parts.kpx") << width << " " << shown;
  }
#endif
}

}  // namespace
}  // namespace kelpdex
