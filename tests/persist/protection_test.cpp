#include "persist/protection.h"

#include <gtest/gtest.h>
#include <nettle/arcfour.h>
#include <nettle/md5.h>

#include <string>
#include <vector>

#include "persist/binary_format.h"
#include "persist/file_kind.h"
#include "support/file_bytes.h"
#include "support/temp_dir.h"
#include "support/workbook_compare.h"

namespace kelpdex {
namespace {

constexpr const char* kPassword = "Kelp-Secret 7";

// The MD5 of some bytes, straight from nettle, as a check apart from the code under test.
std::string Md5Of(const std::string& bytes) {
  md5_ctx ctx;
  md5_init(&ctx);
  md5_update(&ctx, bytes.size(), reinterpret_cast<const uint8_t*>(bytes.data()));
  uint8_t digest[MD5_DIGEST_SIZE];
  md5_digest(&ctx, sizeof digest, digest);
  return std::string(reinterpret_cast<char*>(digest), sizeof digest);
}

// RC4 over `bytes` with the first `keyBytes` of the password's MD5 as the key.
std::string Rc4(const std::string& password, size_t keyBytes, std::string bytes) {
  std::string key = Md5Of(password);
  arcfour_ctx ctx;
  arcfour_set_key(&ctx, keyBytes, reinterpret_cast<const uint8_t*>(key.data()));
  auto* data = reinterpret_cast<uint8_t*>(bytes.data());
  arcfour_crypt(&ctx, bytes.size(), data, data);
  return bytes;
}

class ProtectionTest : public ::testing::Test {
 protected:
  void SetUp() override { testing::BuildSampleWorkbook(book); }

  std::string Save(Workbook& from, const std::string& name, uint8_t mode, bool gz) {
    from.protectionMode = mode;
    std::string path = dir.Path(name);
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, gz));
    EXPECT_TRUE(WriteBinaryDocument(out, from)) << int(out.error());
    EXPECT_TRUE(out.Close());
    return path;
  }
  // The error code of a load; 0 when it succeeded.
  int Load(const std::string& path, Workbook& into, const char* password) {
    FileStream in;
    if (!in.Open(path, StreamMode::kRead, true)) return in.error();
    return ReadBinaryDocument(in, into, password, path) ? 0 : into.errorCode;
  }
  // The plain stream of the document, as an unprotected save writes it behind its header.
  std::string PlainStream(const Workbook& from, bool readOnlyCopy) {
    std::string path = dir.Path("plain.bin");
    FileStream out;
    EXPECT_TRUE(out.Open(path, StreamMode::kWrite, false));
    EXPECT_TRUE(WriteBinaryStream(out, from, nullptr, readOnlyCopy));
    EXPECT_TRUE(out.Close());
    return testing::ReadFileBytes(path);
  }

  testing::TempDir dir;
  Workbook book;
};

TEST_F(ProtectionTest, BothModesRoundTripPlainAndGzippedOnlyWithTheRightPassword) {
  book.password.Set(kPassword);
  for (uint8_t mode : {1, 2}) {
    for (bool gz : {false, true}) {
      SCOPED_TRACE(::testing::Message() << "mode " << int(mode) << (gz ? " gzipped" : ""));
      std::string path = Save(book, "p.kpx", mode, gz);
      NativeFileKind kind;
      ProtectionMode protection;
      ErrorCode error;
      ASSERT_TRUE(SniffFile(path, kind, protection, error));
      EXPECT_EQ(kind, gz ? NativeFileKind::kBinaryCompressed : NativeFileKind::kBinary);
      EXPECT_EQ(int(protection), mode);

      Workbook back;
      ASSERT_EQ(Load(path, back, kPassword), 0);
      testing::ExpectSameWorkbook(book, back);
      EXPECT_FALSE(back.readOnly);
      EXPECT_EQ(back.protectionMode, mode);
      EXPECT_EQ(back.password.view(), kPassword);

      Workbook wrong;
      EXPECT_EQ(Load(path, wrong, "Kelp-Secret 8"), err::kInvalidPassword);
      EXPECT_EQ(wrong.firstNode, nullptr);
      EXPECT_TRUE(wrong.password.empty());

      // Without a password only the read-only copy of mode 1 opens: values, no formulas.
      Workbook none;
      EXPECT_EQ(Load(path, none, nullptr), mode == 1 ? 0 : err::kInvalidPassword);
      if (mode == 1) {
        EXPECT_TRUE(none.readOnly);
        EXPECT_TRUE(none.password.empty());
        const CellRecord* r = none.FindTable("People")->cells.GetCell(301, 0);
        ASSERT_TRUE(r != nullptr && cell::IsText(r));
        EXPECT_EQ(cell::Text(r), "ab");
        EXPECT_TRUE(cell::IsFormula(back.FindTable("People")->cells.GetCell(301, 0)));
      }
    }
  }
}

// The file is laid out byte for byte as the platform's crypto service makes it: header, plain
// copy, then one RC4 stream keyed with MD5(password) over D[0], the filler, D and the stream.
TEST_F(ProtectionTest, TheFileHoldsTheHeadAndStreamUnderOneKeyStream) {
  book.password.Set(kPassword);
  std::string stream = PlainStream(book, false);
  uint8_t digest[16];
  ComputeDocumentDigest(book, digest);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(digest), 16), Md5Of(stream));

  std::string file = testing::ReadFileBytes(Save(book, "m1.kpx", 1, false));
  std::string copy = PlainStream(book, true);
  ASSERT_EQ(file.substr(0, 11), "32100000000");
  ASSERT_EQ(file.substr(11, copy.size()), copy);
  std::string plain = Rc4(kPassword, 16, file.substr(11 + copy.size()));
  size_t filler = std::max(1, uint8_t(plain[0]) * 4);
  EXPECT_EQ(plain[0], char(digest[0]));
  EXPECT_EQ(plain.substr(1, filler), std::string(filler, char(digest[1])));
  EXPECT_EQ(plain.substr(1 + filler, 16), Md5Of(stream));
  EXPECT_EQ(plain.substr(17 + filler), stream);

  // Another save time gives another digest, and with it most likely another head.
  book.lastSavedAt = "2026-11-21T10:00:01";
  uint8_t later[16];
  ComputeDocumentDigest(book, later);
  EXPECT_NE(std::string(reinterpret_cast<char*>(later), 16), Md5Of(stream));
}

// No save makes a 40-bit file, but one opens: five bytes of the MD5 are its key.
TEST_F(ProtectionTest, AFortyBitFileOpensWithItsShortKey) {
  std::string stream = PlainStream(book, false);
  std::string digest = Md5Of(stream);
  size_t filler = std::max(1, uint8_t(digest[0]) * 4);
  std::string head = digest.substr(0, 1) + std::string(filler, digest[1]) + digest;
  std::string path = dir.Path("forty.kpx");
  testing::WriteFileBytes(path, "31000000000" + Rc4(kPassword, 5, head + stream));
  Workbook back;
  ASSERT_EQ(Load(path, back, kPassword), 0);
  testing::ExpectSameWorkbook(book, back);
  EXPECT_EQ(back.protectionMode, 2);
  // A key digit that names no key length cannot open at all.
  std::string file = testing::ReadFileBytes(path);
  file[1] = '7';
  testing::WriteFileBytes(path, file);
  EXPECT_EQ(Load(path, back, kPassword), err::kCryptoKeyFailed);
}

TEST_F(ProtectionTest, AnyDamageToTheEncipheredPartIsAnInvalidPassword) {
  book.password.Set(kPassword);
  for (uint8_t mode : {1, 2}) {
    std::string path = Save(book, "d.kpx", mode, false);
    std::string good = testing::ReadFileBytes(path);
    size_t start = 11 + (mode == 1 ? PlainStream(book, true).size() : 0);
    std::string damagedPath = dir.Path("damaged.kpx");
    // Every byte at the start of the head, then strides through the rest of it and the stream.
    for (size_t at = start; at < good.size(); at += at < start + 24     ? 1
                                                    : at < start + 1040 ? 97
                                                                        : 397) {
      std::string bad = good;
      bad[at] = char(bad[at] ^ 0x20);
      testing::WriteFileBytes(damagedPath, bad);
      Workbook back;
      ASSERT_EQ(Load(damagedPath, back, kPassword), err::kInvalidPassword) << "byte " << at;
    }
    std::string bad = good;
    bad.back() = char(bad.back() ^ 1);
    testing::WriteFileBytes(damagedPath, bad);
    Workbook back;
    EXPECT_EQ(Load(damagedPath, back, kPassword), err::kInvalidPassword);

    // Cut anywhere, the file fails with a code: no crash, nothing read.
    std::vector<size_t> sizes = {0, 5, 10, 11};
    for (size_t size = start - 5; size < start + 40; ++size) sizes.push_back(size);
    for (size_t size = start + 40; size < good.size(); size += 1009) sizes.push_back(size);
    for (size_t size : sizes) {
      testing::WriteFileBytes(damagedPath, good.substr(0, size));
      Workbook cut;
      int code = Load(damagedPath, cut, kPassword);
      EXPECT_NE(code, 0) << "cut at " << size;
      EXPECT_EQ(cut.firstNode, nullptr);
    }
  }
}

}  // namespace
}  // namespace kelpdex
