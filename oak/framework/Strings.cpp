#include "oak/framework/Strings.h"

#include "oak/framework/FileContent.h"

namespace oak {

void TStrings::RaiseIndex(int index, int count) {
  throw EStringListError(u"List index out of bounds (" + IntToStr(index) + u" of " +
                         IntToStr(count) + u").");
}

// --- one text ------------------------------------------------------------------

TObject* TStrings::GetObjects(int) const { return nullptr; }

void TStrings::SetObjects(int, TObject*) {}

int TStrings::Add(TStringView text) {
  const int index = GetCount();
  Insert(index, text);
  return index;
}

int TStrings::AddObject(TStringView text, TObject* object) {
  const int index = Add(text);
  SetObjects(index, object);
  return index;
}

void TStrings::InsertObject(int index, TStringView text, TObject* object) {
  Insert(index, text);
  SetObjects(index, object);
}

void TStrings::Exchange(int index1, int index2) {
  WithinUpdate([&] {
    TObject* const object = GetObjects(index1);
    const TString text = Get(index1);
    const TString other = Get(index2);
    Put(index1, other);
    SetObjects(index1, GetObjects(index2));
    Put(index2, text);
    SetObjects(index2, object);
  });
}

void TStrings::Move(int from, int to) {
  if (to < 0 || to >= GetCount()) RaiseIndex(to, GetCount());
  if (from == to) return;
  WithinUpdate([&] {
    TObject* const object = GetObjects(from);
    const TString text = Get(from);
    SetObjects(from, nullptr);
    Delete(from);
    InsertObject(to, text, object);
  });
}

// --- many ------------------------------------------------------------------------

void TStrings::AddStrings(const TStrings& strings) {
  WithinUpdate([&] {
    const int count = strings.GetCount();  // the list may be this one
    for (int i = 0; i < count; ++i) {
      const TString text = strings.Get(i);
      AddObject(text, strings.GetObjects(i));
    }
  });
}

void TStrings::AddStrings(const TStringArray& strings) {
  WithinUpdate([&] {
    for (const TString& text : strings) Add(text);
  });
}

void TStrings::AddStrings(std::initializer_list<TStringView> strings) {
  AddStrings(TStringArray(strings.begin(), strings.end()));
}

void TStrings::Assign(const TPersistent* source) {
  const auto* strings = dynamic_cast<const TStrings*>(source);
  if (!strings) return TPersistent::Assign(source);
  if (strings == this) return;
  WithinUpdate([&] {
    Clear();
    fLineBreak = strings->fLineBreak;
    fDelimiter = strings->fDelimiter;
    fQuoteChar = strings->fQuoteChar;
    fNameValueSeparator = strings->fNameValueSeparator;
    fStrictDelimiter = strings->fStrictDelimiter;
    fTrailingLineBreak = strings->fTrailingLineBreak;
    fWriteBOM = strings->fWriteBOM;
    fEncoding = strings->fEncoding;
    AddStrings(*strings);
  });
}

bool TStrings::Equals(const TStrings& other) const {
  const int count = GetCount();
  if (other.GetCount() != count) return false;
  for (int i = 0; i < count; ++i)
    if (Get(i) != other.Get(i)) return false;
  return true;
}

TStringArray TStrings::ToArray() const { return TStringArray(begin(), end()); }

void TStrings::SetStrings(TStringArray strings) {
  WithinUpdate([&] {
    Clear();
    AddStrings(strings);
  });
}

// --- searching ---------------------------------------------------------------------

int TStrings::CompareStrings(TStringView a, TStringView b) const { return CompareText(a, b); }

int TStrings::IndexOf(TStringView text) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i)
    if (CompareStrings(Get(i), text) == 0) return i;
  return -1;
}

int TStrings::IndexOfName(TStringView name) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    const TStringView text = Get(i);
    const std::size_t end = text.find(fNameValueSeparator);
    if (end != TStringView::npos && CompareStrings(text.substr(0, end), name) == 0) return i;
  }
  return -1;
}

int TStrings::IndexOfObject(const TObject* object) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i)
    if (GetObjects(i) == object) return i;
  return -1;
}

// --- name and value ------------------------------------------------------------------

TString TStrings::GetNames(int index) const {
  const TString& text = Get(index);
  const std::size_t end = text.find(fNameValueSeparator);
  return end == TString::npos ? TString() : text.substr(0, end);
}

TString TStrings::GetValues(TStringView name) const {
  const int index = IndexOfName(name);
  return index < 0 ? TString() : GetValueFromIndex(index);
}

void TStrings::SetValues(TStringView name, TStringView value) {
  const int index = IndexOfName(name);
  if (value.empty()) {
    if (index >= 0) Delete(index);
    return;
  }
  const TString text = TString(name) + fNameValueSeparator + TString(value);
  if (index < 0)
    Add(text);
  else
    Put(index, text);
}

TString TStrings::GetValueFromIndex(int index) const {
  const TString& text = Get(index);
  const std::size_t end = text.find(fNameValueSeparator);
  return end == TString::npos ? TString() : text.substr(end + 1);
}

void TStrings::SetValueFromIndex(int index, TStringView value) {
  Put(index, GetNames(index) + fNameValueSeparator + TString(value));
}

// --- updates ---------------------------------------------------------------------------

void TStrings::BeginUpdate() {
  if (fUpdateCount == 0) SetUpdateState(true);
  ++fUpdateCount;
}

void TStrings::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  SetUpdateState(false);
}

void TStrings::AbandonUpdate() noexcept {
  try {
    EndUpdate();
  } catch (...) {
    // The exception that ended the update is the one to report.
  }
}

void TStrings::SetUpdateState(bool) {}

// --- files and streams -------------------------------------------------------------------

void TStrings::LoadFromFile(const TString& path, std::optional<TEncoding> encoding) {
  LoadBytes(ReadFileContent(path), encoding);
}

void TStrings::LoadFromStream(IStream& stream, std::optional<TEncoding> encoding) {
  LoadBytes(ReadStreamContent(stream), encoding);
}

void TStrings::SaveToFile(const TString& path, std::optional<TEncoding> encoding) const {
  ReplaceFileContent(path, SaveBytes(encoding));
}

void TStrings::SaveToStream(IStream& stream, std::optional<TEncoding> encoding) const {
  WriteStreamContent(stream, SaveBytes(encoding));
}

void TStrings::LoadBytes(std::string_view bytes, std::optional<TEncoding> encoding) {
  TEncoding found;
  const std::size_t mark = encoding ? TEncoding::GetBufferEncoding(bytes, found, *encoding)
                                    : TEncoding::Detect(bytes, found);
  SetText(found.GetString(bytes.substr(mark)));
  fEncoding = found;
  fWriteBOM = mark > 0;
}

std::string TStrings::SaveBytes(std::optional<TEncoding> encoding) const {
  const TEncoding used = encoding.value_or(fEncoding);
  std::string bytes(fWriteBOM ? used.GetPreamble() : std::string_view());
  return bytes += used.GetBytes(GetText());
}

}  // namespace oak
