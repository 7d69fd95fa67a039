// rtd and udf: properties and methods of COM automation servers. Where there is no COM they check
// their arguments as they would on Windows and then answer "#REF!", as a server that cannot be
// found does.
#include <cstdio>
#include <string>
#include <vector>

#include "functions/arguments.h"
#include "functions/lookup_functions.h"
#include "functions/lookup_search.h"

#ifdef _WIN32
// windows.h first: oleauto.h needs its types.
#include <windows.h>

#include <oleauto.h>
#endif

namespace kelpdex::fn {

namespace {

// The texts every call starts with: the server's programmatic id, the machine (empty for this
// one) and the names asked for (themes or the method).
struct ComNames {
  std::string progId;
  std::string machine;
  std::vector<std::string> names;
};

uint8_t ReadName(FormulaEngine& e, int slot, std::string& out) {
  char buffer[kTextArgSize];
  std::string_view text;
  FormulaValue& v = e.Operand(slot);
  e.LoadReference(v);
  if (v.kind != kind::kString && v.kind != kind::kEmpty && v.errorCode == 0) {
    e.Release(v);
    return ferr::kValue;  // names are texts
  }
  uint8_t error = GetTextArg(e, slot, buffer, text);
  out.assign(text);
  return error;
}

void SetError(FormulaEngine& e, int slot, uint8_t error) {
  e.SetDepth(slot);
  e.Operand(slot) = FormulaValue::Empty(error);
}

#ifdef _WIN32

std::wstring Wide(const std::string& s) {
  if (s.empty()) return std::wstring();
  int n = MultiByteToWideChar(CP_ACP, 0, s.data(), int(s.size()), nullptr, 0);
  std::wstring w(size_t(n), L'\0');
  MultiByteToWideChar(CP_ACP, 0, s.data(), int(s.size()), w.data(), n);
  return w;
}

std::string Narrow(const wchar_t* w, UINT length) {
  if (w == nullptr || length == 0) return std::string();
  int n = WideCharToMultiByte(CP_ACP, 0, w, int(length), nullptr, 0, nullptr, nullptr);
  std::string s(size_t(n), '\0');
  WideCharToMultiByte(CP_ACP, 0, w, int(length), s.data(), n, nullptr, nullptr);
  return s;
}

// The server's IDispatch, or null.
IDispatch* Connect(const ComNames& names) {
  CLSID clsid;
  if (FAILED(CLSIDFromProgID(Wide(names.progId).c_str(), &clsid))) return nullptr;
  std::wstring machine = Wide(names.machine);
  COSERVERINFO server = {};
  server.pwszName = machine.data();
  MULTI_QI qi = {&IID_IDispatch, nullptr, S_OK};
  DWORD contexts = CLSCTX_INPROC_SERVER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;  // 21
  HRESULT hr =
      CoCreateInstanceEx(clsid, nullptr, contexts, machine.empty() ? nullptr : &server, 1, &qi);
  if (FAILED(hr) || FAILED(qi.hr)) return nullptr;
  return static_cast<IDispatch*>(qi.pItf);
}

bool MemberId(IDispatch* server, const std::string& name, DISPID& id) {
  std::wstring w = Wide(name);
  LPOLESTR text = w.data();
  return SUCCEEDED(server->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id));
}

// One cell as a VARIANT, as udf passes it.
void CellVariant(const CellRecord* r, VARIANT& v) {
  VariantInit(&v);
  if (r == nullptr) return;
  if (cell::ErrorNibble(r) != 0) {
    v.vt = VT_UI1;
    v.bVal = cell::ErrorNibble(r);
  } else if (cell::IsText(r)) {
    v.vt = VT_BSTR;
    v.bstrVal = SysAllocString(Wide(std::string(cell::Text(r))).c_str());
  } else {
    v.vt = VT_R8;
    v.dblVal = cell::IsNumber(r) ? cell::Number(r) : cell::CachedNumber(r);
  }
}

// An argument of udf as a VARIANT; the slot is released. False when memory ran out.
bool ArgumentVariant(FormulaEngine& e, int slot, VARIANT& out) {
  VariantInit(&out);
  FormulaValue& v = e.Operand(slot);
  if (v.kind == kind::kArray || v.kind == kind::kRangeReference) {
    RangeArg cells;
    if (GetRangeArg(e, slot, cells) != 0) {
      e.Release(v);
      out.vt = VT_UI1;
      out.bVal = v.errorCode;
      return true;
    }
    e.Release(v);
    bool oneRow = cells.rows() == 1;
    SAFEARRAYBOUND bounds[2] = {{cells.rows(), 0}, {cells.columns(), 0}};
    SAFEARRAY* array = oneRow ? SafeArrayCreate(VT_VARIANT, 1, &bounds[1])
                              : SafeArrayCreate(VT_VARIANT, 2, bounds);
    if (array == nullptr) return false;
    for (uint32_t r = 0; r < cells.rows(); ++r) {
      for (uint32_t c = 0; c < cells.columns(); ++c) {
        VARIANT element;
        const CellRecord* record =
            cells.cells != nullptr
                ? cells.cells->GetCell(cells.firstRow + r, uint16_t(cells.firstColumn + c))
                : nullptr;
        CellVariant(record, element);
        LONG index[2] = {LONG(r), LONG(c)};
        SafeArrayPutElement(array, oneRow ? &index[1] : index, &element);
        VariantClear(&element);
      }
    }
    out.vt = VT_ARRAY | VT_VARIANT;
    out.parray = array;
    return true;
  }
  e.LoadReference(v);
  if (v.errorCode != 0) {
    out.vt = VT_UI1;
    out.bVal = v.errorCode;
  } else if (v.kind == kind::kString) {
    out.vt = VT_BSTR;
    out.bstrVal = SysAllocString(Wide(std::string(e.TopString())).c_str());
  } else if (v.kind == kind::kNumber) {
    out.vt = VT_R8;
    out.dblVal = v.number;
  }
  e.Release(v);
  return true;
}

// A scalar VARIANT as a cell record at (row, column); its size, 0 for an empty one.
uint32_t EncodeVariant(const VARIANT& v, uint32_t row, uint16_t column, uint8_t* record) {
  switch (v.vt) {
    case VT_EMPTY:
      return 0;
    case VT_UI1:
      return cell::EncodeNumber(record, row, column, 0, uint8_t(v.bVal & 0xF0));
    case VT_R8:
      return cell::EncodeNumber(record, row, column, v.dblVal);
    case VT_BSTR:
      return cell::EncodeText(record, row, column,
                              Narrow(v.bstrVal, SysStringLen(v.bstrVal)).substr(0, 4096));
    case VT_CY: {
      double x = 0;
      VarR8FromCy(v.cyVal, &x);
      return cell::EncodeNumber(record, row, column, x);
    }
    case VT_DECIMAL: {
      double x = 0;
      VarR8FromDec(const_cast<DECIMAL*>(&v.decVal), &x);  // mingw-w64 drops the const
      return cell::EncodeNumber(record, row, column, x);
    }
    case VT_DATE: {
      SYSTEMTIME t;
      if (!VariantTimeToSystemTime(v.date, &t)) return 0;
      char text[32];
      std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u", t.wYear, t.wMonth, t.wDay,
                    t.wHour, t.wMinute, t.wSecond);
      return cell::EncodeText(record, row, column, text);
    }
    default:
      return cell::EncodeNumber(record, row, column, 0, ferr::kValue);
  }
}

// The answer of the server, turned into the call's result at `slot`.
void SetVariantResult(FormulaEngine& e, int slot, const VARIANT& v) {
  e.SetDepth(slot);
  if ((v.vt & VT_ARRAY) == 0) {
    uint8_t record[kBlockPayload];
    uint32_t size = EncodeVariant(v, 0, 0, record);
    CellStore scratch;
    if (size > 0) scratch.PutCell(record);
    SetCellResult(e, slot, nullptr, &scratch, 0, 0);
    return;
  }
  SAFEARRAY* array = v.parray;
  UINT dims = SafeArrayGetDim(array);
  LONG low[2] = {0, 0}, high[2] = {0, 0};
  for (UINT d = 0; d < dims && d < 2; ++d) {
    SafeArrayGetLBound(array, d + 1, &low[d]);
    SafeArrayGetUBound(array, d + 1, &high[d]);
  }
  uint32_t rows = dims == 2 ? uint32_t(high[0] - low[0] + 1) : 1;
  uint32_t columns = dims == 2 ? uint32_t(high[1] - low[1] + 1) : uint32_t(high[0] - low[0] + 1);
  CellStore* out = e.PushArray();
  if (out == nullptr || dims == 0 || dims > 2 || columns > uint32_t(kLastColumn) + 1) {
    if (out != nullptr) e.PopArray();
    e.Operand(slot) = FormulaValue::Empty(out == nullptr ? ferr::kMemory : ferr::kValue);
    return;
  }
  bool ok = true;
  CellCursor write;
  for (uint32_t r = 0; r < rows; ++r) {
    for (uint32_t c = 0; c < columns; ++c) {
      LONG index[2] = {dims == 2 ? LONG(low[0] + r) : LONG(low[0] + c), LONG(low[1] + c)};
      VARIANT element;
      VariantInit(&element);
      if (SUCCEEDED(SafeArrayGetElement(array, index, &element))) {
        uint8_t record[kBlockPayload];
        uint32_t size = EncodeVariant(element, r, uint16_t(c), record);
        if (size > 0) ok &= out->PutCell(record, &write);
      }
      VariantClear(&element);
    }
  }
  FormulaValue result = FormulaValue::Array(rows, uint16_t(columns));
  if (!ok) {
    e.PopArray();
    result = FormulaValue::Empty(ferr::kMemory);
  }
  e.Operand(slot) = result;
}

#endif

}  // namespace

void Rtd(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 3) {
    e.SetSyntaxError();
    return;
  }
  ComNames names;
  names.names.resize(size_t(count - 2));
  uint8_t error = 0;
  for (int slot = e.depth() - 1; slot >= base + 2; --slot) {
    error = LargerError(error, ReadName(e, slot, names.names[size_t(slot - base - 2)]));
  }
  error = LargerError(error, ReadName(e, base + 1, names.machine));
  error = LargerError(error, ReadName(e, base, names.progId));
  for (const std::string& theme : names.names) {
    if (error == 0 && theme.empty()) error = ferr::kValue;
  }
  if (error != 0) return SetError(e, base, error);
#ifdef _WIN32
  IDispatch* server = Connect(names);
  if (server == nullptr) return SetError(e, base, ferr::kRef);
  std::vector<VARIANT> values(names.names.size());
  bool ok = true;
  for (size_t i = 0; i < names.names.size(); ++i) {
    VariantInit(&values[i]);
    DISPID id;
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    ok = ok && MemberId(server, names.names[i], id) &&
         SUCCEEDED(server->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                  &values[i], nullptr, nullptr));
  }
  server->Release();
  if (!ok) {
    for (VARIANT& v : values) VariantClear(&v);
    return SetError(e, base, ferr::kRef);
  }
  if (values.size() == 1) {
    SetVariantResult(e, base, values[0]);
  } else {
    // Several themes answer as one column, one value a row.
    CellStore* out = e.PushArray();
    bool stored = out != nullptr;
    CellCursor write;
    for (size_t i = 0; stored && i < values.size(); ++i) {
      uint8_t record[kBlockPayload];
      uint32_t size = (values[i].vt & VT_ARRAY)
                          ? cell::EncodeNumber(record, uint32_t(i), 0, 0, ferr::kValue)
                          : EncodeVariant(values[i], uint32_t(i), 0, record);
      if (size > 0) stored &= out->PutCell(record, &write);
    }
    e.SetDepth(base);
    FormulaValue result = FormulaValue::Array(uint32_t(values.size()), 1);
    if (!stored) {
      if (out != nullptr) e.PopArray();
      result = FormulaValue::Empty(ferr::kMemory);
    }
    e.Operand(base) = result;
  }
  for (VARIANT& v : values) VariantClear(&v);
#else
  SetError(e, base, ferr::kRef);
#endif
}

void Udf(FormulaEngine& e) {
  int base = e.Operand(e.depth()).argumentBase;
  int count = e.depth() - base;
  if (count < 3) {
    e.SetSyntaxError();
    return;
  }
  // The parameters travel as they are, errors included: an error value is data for the server.
  uint8_t error = 0;
#ifdef _WIN32
  std::vector<VARIANT> parameters(size_t(count - 3));
  bool ok = true;
  // Read from the last parameter down, which is the order IDispatch wants them in.
  for (int slot = e.depth() - 1, i = 0; slot >= base + 3; --slot, ++i) {
    ok &= ArgumentVariant(e, slot, parameters[size_t(i)]);
  }
#else
  ReleaseArgs(e, base + 3, e.depth() - 1);
#endif
  ComNames names;
  names.names.resize(1);
  error = LargerError(error, ReadName(e, base + 2, names.names[0]));
  error = LargerError(error, ReadName(e, base + 1, names.machine));
  error = LargerError(error, ReadName(e, base, names.progId));
  if (error == 0 && names.names[0].empty()) error = ferr::kValue;
#ifdef _WIN32
  IDispatch* server = error == 0 && ok ? Connect(names) : nullptr;
  VARIANT answer;
  VariantInit(&answer);
  DISPID id;
  bool called = server != nullptr && MemberId(server, names.names[0], id);
  if (called) {
    DISPPARAMS call = {parameters.data(), nullptr, UINT(parameters.size()), 0};
    called = SUCCEEDED(server->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &call,
                                      &answer, nullptr, nullptr));
  }
  if (server != nullptr) server->Release();
  for (VARIANT& v : parameters) VariantClear(&v);
  if (error == 0 && !ok) error = ferr::kMemory;
  if (error == 0 && !called) error = ferr::kRef;
  if (error != 0) {
    VariantClear(&answer);
    return SetError(e, base, error);
  }
  SetVariantResult(e, base, answer);
  VariantClear(&answer);
#else
  SetError(e, base, error != 0 ? error : ferr::kRef);
#endif
}

}  // namespace kelpdex::fn
