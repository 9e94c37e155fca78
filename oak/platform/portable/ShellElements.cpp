// Elements of item identifier lists, and lists of them as cursors.
#include <cstring>

#include "oak/base/Exceptions.h"
#include "oak/platform/portable/PortableShell.h"

namespace oak {

namespace {

// Copies the header out, since elements need not be aligned; false for foreign bytes.
bool ReadHeader(PCUIDLIST_RELATIVE element, TElementHeader& header) noexcept {
  if (!element) return false;
  USHORT size;
  std::memcpy(&size, element, sizeof size);
  if (size < sizeof header) return false;
  std::memcpy(&header, element, sizeof header);
  return header.Magic == ElementMagic;
}

class TListCursor : public TInterfacedObject<IFolderCursor> {
 public:
  explicit TListCursor(std::vector<TPidl> elements) : fElements(std::move(elements)) {}
  HRESULT Next(PCUITEMID_CHILD* element) override {
    if (fNext == fElements.size()) return S_FALSE;
    *element = fElements[fNext++].Get();
    return S_OK;
  }

 private:
  std::vector<TPidl> fElements;
  std::size_t fNext = 0;
};

}  // namespace

std::span<const BYTE> ElementPayload(PCUITEMID_CHILD element, BYTE kind, BYTE version) noexcept {
  TElementHeader header;
  if (!ReadHeader(element, header) || header.Kind != kind || header.Version != version) return {};
  return {reinterpret_cast<const BYTE*>(element) + sizeof header, header.Size - sizeof header};
}

BYTE ElementKind(PCUIDLIST_RELATIVE element) noexcept {
  TElementHeader header;
  return ReadHeader(element, header) ? header.Kind : BYTE{0};
}

TPidl MakeElement(BYTE kind, BYTE version, std::span<const BYTE> payload) {
  const std::size_t size = sizeof(TElementHeader) + payload.size();
  if (size > 0xFFFF) throw EInvalidArgument(u"An element of an item identifier list is too long.");
  BYTE* block = static_cast<BYTE*>(CoTaskMemAlloc(size + sizeof(USHORT)));
  if (!block) throw std::bad_alloc();
  const TElementHeader header{static_cast<USHORT>(size), ElementMagic, kind, version};
  std::memcpy(block, &header, sizeof header);
  if (!payload.empty()) std::memcpy(block + sizeof header, payload.data(), payload.size());
  std::memset(block + size, 0, sizeof(USHORT));
  return TPidl::Adopt(reinterpret_cast<PItemIdList>(block));
}

TPidl MakeNameElement(BYTE kind, BYTE version, DWORD flags, TStringView name) {
  std::vector<BYTE> payload(sizeof flags + name.size() * sizeof(char16_t));
  std::memcpy(payload.data(), &flags, sizeof flags);
  if (!name.empty())
    std::memcpy(payload.data() + sizeof flags, name.data(), name.size() * sizeof(char16_t));
  return MakeElement(kind, version, payload);
}

bool ReadNameElement(PCUITEMID_CHILD element, BYTE kind, BYTE version, DWORD& flags,
                     TString& name) {
  const std::span<const BYTE> payload = ElementPayload(element, kind, version);
  if (payload.size() < sizeof flags + sizeof(char16_t)) return false;
  const std::size_t bytes = payload.size() - sizeof flags;
  if (bytes % sizeof(char16_t) != 0) return false;
  std::memcpy(&flags, payload.data(), sizeof flags);
  name.resize(bytes / sizeof(char16_t));
  std::memcpy(name.data(), payload.data() + sizeof flags, bytes);
  return name.find(u'\0') == TString::npos;
}

Ref<IFolderCursor> MakeListCursor(std::vector<TPidl> elements) {
  return MakeRef<TListCursor>(std::move(elements));
}

bool PassesEnumeration(DWORD flags, DWORD attributes) noexcept {
  if (!(flags & (attributes & SFGAO_FOLDER ? DWORD{SHCONTF_FOLDERS} : DWORD{SHCONTF_NONFOLDERS})))
    return false;
  if (!(attributes & SFGAO_HIDDEN)) return true;
  if (!(flags & SHCONTF_INCLUDEHIDDEN)) return false;
  return !(attributes & SFGAO_SYSTEM) || (flags & SHCONTF_INCLUDESUPERHIDDEN) != 0;
}

}  // namespace oak
