#include <cstring>

#include "exchange/xbase.h"
#include "platform/os.h"
#include "store/bytes.h"
#include "store/catalogue.h"
#include "store/field_row.h"

namespace kelpdex {

uint32_t XbaseFieldSize(const XbaseField& field) {
  return field.length;
}

std::string XbaseMemoPath(const std::string& path, XbaseDialect dialect) {
  const char* extension = dialect == XbaseDialect::kFoxPro ? ".ftp" : ".dbt";
  size_t nameStart = path.size() - platform::FileNameOf(path).size();
  size_t dot = path.rfind('.');
  if (dot == std::string::npos || dot <= nameStart) return path + extension;
  return path.substr(0, dot) + extension;
}

XbaseDialect XbaseDialectOfVersion(uint8_t version, XbaseDialect asked) {
  switch (version) {
    case 0x83:
      return asked == XbaseDialect::kClipper ? asked : XbaseDialect::kDbase3;
    case 0x8B:
    case 0x7B:
      return XbaseDialect::kDbase4;
    case 0xF5:
      return XbaseDialect::kFoxPro;
    default:
      return asked;
  }
}

bool ReadXbaseHeader(FileStream& in, XbaseHeader& header, ErrorCode& error) {
  header = XbaseHeader();
  uint8_t h[kXbaseHeaderSize];
  if (in.ReadSome(h, sizeof h) != sizeof h) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  header.version = h[0];
  header.year = h[1];
  header.month = h[2];
  header.day = h[3];
  header.recordCount = LoadU32(h + 4);
  header.headerSize = LoadU16(h + 8);
  header.recordSize = LoadU16(h + 10);
  header.transaction = h[14];
  header.encryption = h[15];
  header.tableFlags = h[28];
  header.languageDriver = h[29];
  if (header.headerSize < kXbaseHeaderSize + kXbaseDescriptorSize) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  uint32_t count = (header.headerSize - kXbaseHeaderSize) / kXbaseDescriptorSize;
  if (count > kXbaseMaxFields) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  uint32_t consumed = kXbaseHeaderSize;
  uint32_t recordSize = 1;
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t d[kXbaseDescriptorSize];
    size_t n = in.ReadSome(d, 1);
    consumed += static_cast<uint32_t>(n);
    if (n == 0) {
      error = err::kInvalidBinaryFormat;
      return false;
    }
    if (d[0] == 0x0D) break;  // the list ended before the header size said
    if (in.ReadSome(d + 1, sizeof d - 1) != sizeof d - 1) {
      error = err::kInvalidBinaryFormat;
      return false;
    }
    consumed += sizeof d - 1;
    if (d[11] < 'A' || d[11] > 'Z') break;
    XbaseField field;
    size_t nameLength = 0;
    while (nameLength < 11 && d[nameLength] != 0) ++nameLength;
    field.name.assign(reinterpret_cast<const char*>(d), nameLength);
    field.type = static_cast<char>(d[11]);
    field.length = d[16];
    field.decimals = d[17];
    header.fields.push_back(field);
    recordSize += field.length;
  }
  if (header.fields.empty()) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  // FoxPro and Clipper keep a character field's high length byte in its decimal count. Any
  // dialect's file may carry a stray count there, so the record size decides which reading holds.
  uint32_t wide = 1;
  for (const XbaseField& f : header.fields) {
    wide += f.type == 'C' ? f.length + 256u * f.decimals : f.length;
  }
  if (recordSize != header.recordSize && wide == header.recordSize) {
    recordSize = 1;
    for (XbaseField& f : header.fields) {
      if (f.type == 'C' && f.decimals != 0) {
        f.length = static_cast<uint16_t>(f.length + 256u * f.decimals);
        f.decimals = 0;
      }
      recordSize += f.length;
    }
  }
  if (recordSize > header.recordSize) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  if (consumed > header.headerSize) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  if (!in.Skip(header.headerSize - consumed)) {
    error = err::kInvalidBinaryFormat;
    return false;
  }
  return true;
}

void WriteXbaseHeader(FileStream& out, const XbaseHeader& header) {
  uint8_t h[kXbaseHeaderSize] = {};
  h[0] = header.version;
  h[1] = header.year;
  h[2] = header.month;
  h[3] = header.day;
  StoreU32(h + 4, header.recordCount);
  StoreU16(h + 8, header.headerSize);
  StoreU16(h + 10, header.recordSize);
  h[14] = header.transaction;
  h[15] = header.encryption;
  h[28] = header.tableFlags;
  h[29] = header.languageDriver;
  out.Write(h, sizeof h);
  for (const XbaseField& field : header.fields) {
    uint8_t d[kXbaseDescriptorSize] = {};
    std::memcpy(d, field.name.data(), field.name.size() < 10 ? field.name.size() : 10);
    d[11] = static_cast<uint8_t>(field.type);
    d[16] = static_cast<uint8_t>(field.length & 0xFF);
    // A long character field carries its high length byte where the decimals would go.
    d[17] = field.type == 'C' ? static_cast<uint8_t>(field.length >> 8) : field.decimals;
    out.Write(d, sizeof d);
  }
  uint8_t cr = 0x0D;
  out.Write(&cr, 1);
  uint32_t written = kXbaseHeaderSize + kXbaseDescriptorSize * header.fields.size() + 1;
  static const uint8_t kZeros[64] = {};
  while (written < header.headerSize) {
    uint32_t n = header.headerSize - written < 64 ? header.headerSize - written : 64;
    out.Write(kZeros, n);
    written += n;
  }
}

}  // namespace kelpdex
