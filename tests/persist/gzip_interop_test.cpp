// Kelpdex's gzip against the gzip program and Python's gzip module, both ways.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "persist/document_file.h"
#include "persist/gzip_test_data.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

bool Have(const char* program) {
  return std::system((std::string("command -v ") + program + " >/dev/null 2>&1").c_str()) == 0;
}

bool Shell(const std::string& command) {
  return std::system(command.c_str()) == 0;
}

class GzipInteropTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Have("gzip")) GTEST_SKIP() << "gzip is not installed";
    if (!Have("python3")) GTEST_SKIP() << "python3 is not installed";
  }
  std::string Path(const std::string& name) { return dir.Path(name); }
  testing::TempDir dir;
};

constexpr const char* kPythonRead =
    "python3 -c 'import gzip,sys; open(sys.argv[2],\"wb\").write(gzip.open(sys.argv[1]).read())'";

TEST_F(GzipInteropTest, OurFilesDecompressByteForByteToThePlainForm) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  const struct {
    NativeFormat packed;
    NativeFormat plain;
  } forms[] = {{NativeFormat::kBinaryCompressed, NativeFormat::kBinary},
               {NativeFormat::kXmlCompressed, NativeFormat::kXml}};
  for (const auto& form : forms) {
    SCOPED_TRACE(int(form.packed));
    ErrorCode error;
    ASSERT_TRUE(WriteDocumentFile(Path("doc.gz"), book, form.packed, error));
    ASSERT_TRUE(WriteDocumentFile(Path("doc.plain"), book, form.plain, error));
    const std::string plain = testing::ReadFileBytes(Path("doc.plain"));
    ASSERT_TRUE(Shell("gzip -t " + Path("doc.gz")));
    ASSERT_TRUE(Shell("gzip -dc " + Path("doc.gz") + " > " + Path("by-gzip")));
    EXPECT_EQ(testing::ReadFileBytes(Path("by-gzip")), plain);
    ASSERT_TRUE(Shell(std::string(kPythonRead) + " " + Path("doc.gz") + " " + Path("by-python")));
    EXPECT_EQ(testing::ReadFileBytes(Path("by-python")), plain);
  }
  // Many members, from a small buffer.
  std::string data = testing::PatternBytes(300000);
  ASSERT_TRUE(testing::WriteOwnGzip(Path("many.gz"), data, 4096));
  ASSERT_TRUE(Shell("gzip -dc " + Path("many.gz") + " > " + Path("many-gzip")));
  EXPECT_EQ(testing::ReadFileBytes(Path("many-gzip")), data);
  ASSERT_TRUE(Shell(std::string(kPythonRead) + " " + Path("many.gz") + " " + Path("many-python")));
  EXPECT_EQ(testing::ReadFileBytes(Path("many-python")), data);
}

TEST_F(GzipInteropTest, FilesOfGzipAndPythonOpenAsCompressedDocuments) {
  Workbook book;
  testing::BuildSampleWorkbook(book);
  for (NativeFormat plainForm : {NativeFormat::kBinary, NativeFormat::kXml}) {
    SCOPED_TRACE(int(plainForm));
    ErrorCode error;
    std::string plain = Path("doc.kpx");
    ASSERT_TRUE(WriteDocumentFile(plain, book, plainForm, error));
    std::string bytes = testing::ReadFileBytes(plain);
    testing::WriteFileBytes(Path("head"), bytes.substr(0, bytes.size() / 3));
    testing::WriteFileBytes(Path("tail"), bytes.substr(bytes.size() / 3));
    const std::string made[] = {
        "gzip -c -n " + plain + " > " + Path("made"),
        "gzip -c -N " + plain + " > " + Path("made"),
        "(gzip -c " + Path("head") + "; gzip -c -1 " + Path("tail") + ") > " + Path("made"),
        "python3 -c 'import gzip,sys; open(sys.argv[2],\"wb\").write(gzip.compress("
        "open(sys.argv[1],\"rb\").read()))' " +
            plain + " " + Path("made"),
        "python3 -c 'import gzip,sys\n"
        "with gzip.GzipFile(filename=\"table.kpx\", mode=\"wb\", fileobj=open(sys.argv[2],\"wb\"),"
        " mtime=1) as f: f.write(open(sys.argv[1],\"rb\").read())' " +
            plain + " " + Path("made"),
        "python3 -c 'import gzip,sys; b=open(sys.argv[1],\"rb\").read(); "
        "open(sys.argv[2],\"wb\").write(b\"\".join(gzip.compress(b[i:i+300]) for i in "
        "range(0,len(b),300)))' " +
            plain + " " + Path("made"),
    };
    for (const std::string& command : made) {
      SCOPED_TRACE(command);
      ASSERT_TRUE(Shell(command));
      Workbook back;
      NativeFileKind kind;
      ASSERT_TRUE(ReadDocumentFile(Path("made"), back, kind, error)) << int(error);
      EXPECT_EQ(kind, plainForm == NativeFormat::kBinary ? NativeFileKind::kBinaryCompressed
                                                         : NativeFileKind::kXmlCompressed);
      testing::ExpectSameWorkbook(book, back);
    }
  }
}

}  // namespace
}  // namespace kelpdex
