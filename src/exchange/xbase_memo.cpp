#include <fcntl.h>

#include <cstring>

#include "exchange/xbase.h"
#include "persist/raw_file.h"
#include "store/bytes.h"
#include "text/code_page.h"

namespace kelpdex {

namespace {
constexpr uint32_t kMemoHeaderSize = 512;
constexpr uint32_t kFoxProBlock = 64;
constexpr uint32_t kDbaseBlock = 512;

void StoreBigU32(uint8_t* at, uint32_t value) {
  at[0] = static_cast<uint8_t>(value >> 24);
  at[1] = static_cast<uint8_t>(value >> 16);
  at[2] = static_cast<uint8_t>(value >> 8);
  at[3] = static_cast<uint8_t>(value);
}
}  // namespace

XbaseMemoReader::XbaseMemoReader(const std::string& path, XbaseDialect dialect)
    : dialect_(dialect) {
  fd_ = KELPDEX_OPEN(path.c_str(), O_RDONLY | kBinaryFlag);
  if (fd_ < 0) return;
  long end = static_cast<long>(KELPDEX_SEEK(fd_, 0, SEEK_END));
  size_ = end > 0 ? static_cast<uint64_t>(end) : 0;
  if (dialect_ == XbaseDialect::kDbase4) {
    uint8_t size[2];
    if (ReadAt(20, size, 2) && LoadU16(size) != 0) blockSize_ = LoadU16(size);
  }
}

XbaseMemoReader::~XbaseMemoReader() {
  if (fd_ >= 0) KELPDEX_CLOSE(fd_);
}

bool XbaseMemoReader::ReadAt(uint64_t at, uint8_t* out, size_t size) {
  if (at + size > size_) return false;
  if (KELPDEX_SEEK(fd_, static_cast<off_t>(at), SEEK_SET) < 0) return false;
  return ReadRaw(fd_, out, size) == static_cast<long>(size);
}

bool XbaseMemoReader::Read(uint32_t block, std::string& text, ErrorCode& error) {
  text.clear();
  if (fd_ < 0) return true;
  switch (dialect_) {
    case XbaseDialect::kDbase3:
    case XbaseDialect::kClipper: {
      uint64_t at = static_cast<uint64_t>(block) * kDbaseBlock;
      if (at >= size_) {
        error = err::kFileRead;
        return false;
      }
      uint8_t piece[kDbaseBlock];
      for (;;) {
        size_t n = static_cast<size_t>(size_ - at < kDbaseBlock ? size_ - at : kDbaseBlock);
        // A memo cut by the end of the file keeps what it has.
        if (n == 0) return true;
        if (!ReadAt(at, piece, n)) {
          error = err::kFileRead;
          return false;
        }
        size_t before = text.size();
        text.append(reinterpret_cast<const char*>(piece), n);
        // The pair may straddle two pieces.
        size_t from = before > 0 ? before - 1 : 0;
        size_t pair = text.find("\x1a\x1a", from);
        if (pair != std::string::npos) {
          text.resize(pair);
          return true;
        }
        at += n;
      }
    }
    case XbaseDialect::kDbase4: {
      uint64_t at = static_cast<uint64_t>(block) * blockSize_ + 4;
      uint8_t length[4];
      if (!ReadAt(at, length, 4) || LoadU32(length) < 8) {
        error = err::kFileRead;
        return false;
      }
      // The length counts the entry's own 8 bytes.
      uint32_t size = LoadU32(length) - 8;
      if (at + 4 + size > size_) {
        error = err::kFileRead;
        return false;
      }
      text.resize(size);
      if (!ReadAt(at + 4, reinterpret_cast<uint8_t*>(text.data()), size)) {
        error = err::kFileRead;
        return false;
      }
      return true;
    }
    case XbaseDialect::kFoxPro:
      // FoxPro memos are written but never read back: such a memo comes in empty.
      return true;
  }
  return true;
}

XbaseMemoWriter::XbaseMemoWriter(XbaseDialect dialect, const std::string& tableName)
    : dialect_(dialect), blockSize_(dialect == XbaseDialect::kFoxPro ? kFoxProBlock : kDbaseBlock) {
  bytes_.assign(kMemoHeaderSize, '\0');
  uint8_t* h = reinterpret_cast<uint8_t*>(bytes_.data());
  switch (dialect_) {
    case XbaseDialect::kDbase3:
    case XbaseDialect::kClipper:
      h[16] = 3;
      break;
    case XbaseDialect::kDbase4: {
      std::string name = text::Upper(tableName.substr(0, 8));
      std::memcpy(h + 8, name.data(), name.size());
      StoreU16(h + 20, static_cast<uint16_t>(kDbaseBlock));
      break;
    }
    case XbaseDialect::kFoxPro:
      h[6] = static_cast<uint8_t>(kFoxProBlock >> 8);
      h[7] = static_cast<uint8_t>(kFoxProBlock & 0xFF);
      break;
  }
}

uint32_t XbaseMemoWriter::Append(std::string_view text) {
  uint32_t block = static_cast<uint32_t>((bytes_.size() + blockSize_ - 1) / blockSize_);
  bytes_.resize(static_cast<size_t>(block) * blockSize_, '\0');
  switch (dialect_) {
    case XbaseDialect::kDbase3:
    case XbaseDialect::kClipper:
      bytes_ += text;
      bytes_ += "\x1a\x1a";
      break;
    case XbaseDialect::kDbase4: {
      uint8_t head[8] = {0xFF, 0xFF, 0x08, 0x00};
      StoreU32(head + 4, static_cast<uint32_t>(text.size() + 8));
      bytes_.append(reinterpret_cast<const char*>(head), 8);
      bytes_ += text;
      break;
    }
    case XbaseDialect::kFoxPro: {
      uint8_t head[8];
      StoreBigU32(head, 1);
      StoreBigU32(head + 4, static_cast<uint32_t>(text.size()));
      bytes_.append(reinterpret_cast<const char*>(head), 8);
      bytes_ += text;
      break;
    }
  }
  bytes_.resize((bytes_.size() + blockSize_ - 1) / blockSize_ * blockSize_, '\0');
  return block;
}

const std::string& XbaseMemoWriter::Finish() {
  uint32_t next = static_cast<uint32_t>(bytes_.size() / blockSize_);
  uint8_t* h = reinterpret_cast<uint8_t*>(bytes_.data());
  if (dialect_ == XbaseDialect::kFoxPro) {
    StoreBigU32(h, next);
  } else {
    StoreU32(h, next);
  }
  return bytes_;
}

}  // namespace kelpdex
