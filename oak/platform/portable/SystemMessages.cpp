// Texts of the system's error codes.
#include <algorithm>
#include <cstdarg>
#include <iterator>
#include <vector>

#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

constexpr DWORD ErrorMessageNotFound = 317;

struct TMessage {
  DWORD Code;
  TStringView Text;
};

// Ascending by code.
constexpr TMessage Messages[] = {
    {0, u"Done, with no error."},
    {1, u"This function is not known."},
    {2, u"There is no file with this name."},
    {3, u"There is no folder with this path."},
    {4, u"Too many files are open."},
    {5, u"Access is denied."},
    {6, u"The handle is not valid."},
    {8, u"There is not enough memory for this."},
    {13, u"The data is not valid."},
    {14, u"There is not enough memory left to finish this."},
    {15, u"There is no such drive."},
    {16, u"The current folder cannot be removed."},
    {17, u"An object cannot be moved to another disk in this way."},
    {18, u"There are no more files."},
    {19, u"The medium is write-protected."},
    {20, u"There is no such device."},
    {21, u"The device is not ready."},
    {25, u"The position on the disk cannot be found."},
    {29, u"Writing to the device failed."},
    {30, u"Reading from the device failed."},
    {31, u"A device of the system does not work."},
    {32, u"Another program is using this file."},
    {33, u"Another program has locked a part of this file."},
    {38, u"The end of the file is reached."},
    {39, u"The disk is full."},
    {50, u"This request is not supported."},
    {51, u"The computer on the network cannot be reached."},
    {53, u"There is no such path on the network."},
    {54, u"The network is busy."},
    {59, u"The network failed unexpectedly."},
    {64, u"The network name is no longer there."},
    {65, u"Access to the network is denied."},
    {67, u"There is no such name on the network."},
    {80, u"There is a file with this name already."},
    {82, u"The folder or file cannot be made."},
    {86, u"The password is wrong."},
    {87, u"A parameter is wrong."},
    {109, u"The pipe has been closed."},
    {112, u"There is not enough room on the disk."},
    {120, u"This function does not exist on this system."},
    {121, u"The time for waiting is over."},
    {122, u"The buffer handed over is too small."},
    {123, u"The name of a file, folder or volume is not well-formed."},
    {124, u"The information level is wrong."},
    {126, u"The module cannot be found."},
    {127, u"The procedure cannot be found."},
    {131, u"A position before the beginning of the file was asked for."},
    {144, u"The folder is not the root of a drive."},
    {145, u"The folder is not empty."},
    {161, u"The path is not well-formed."},
    {170, u"The resource is in use."},
    {183, u"An object with this name exists already."},
    {203, u"There is no such environment variable."},
    {206, u"The name or path is too long."},
    {223, u"The file is too large."},
    {234, u"There is more data."},
    {259, u"There is no more data."},
    {267, u"The name is not that of a folder."},
    {317, u"There is no text for this message number."},
    {487, u"The address is not valid."},
    {534, u"A result is too large for its type."},
    {995, u"The operation was ended before it was done."},
    {997, u"The operation is under way."},
    {998, u"Memory was reached that may not be."},
    {1004, u"The flags are not valid."},
    {1005, u"The volume has no file system that is known here."},
    {1112, u"There is no medium in the drive."},
    {1117, u"The device failed while reading or writing."},
    {1155, u"No program is assigned to this kind of file."},
    {1168, u"The element cannot be found."},
    {1169, u"Nothing matches the key."},
    {1200, u"The device name is not valid."},
    {1201, u"The device is remembered, but not connected."},
    {1203, u"No network takes this path."},
    {1208, u"The network reported an error of its own."},
    {1222, u"There is no network."},
    {1223, u"The user cancelled this."},
    {1225, u"The other computer refused the connection."},
    {1231, u"The network cannot be reached."},
    {1326, u"The user name or the password is wrong."},
    {1400, u"The window handle is not valid."},
    {1460, u"The time for this is over."},
    {1464, u"Symbolic links are not supported here."},
    {1785, u"The medium cannot be read."},
    {1813, u"There is no resource of this kind in the file."},
    {1814, u"There is no resource with this name in the file."},
    {1920, u"The system cannot reach this file."},
    {1921, u"The name of the file cannot be resolved."},
    {2202, u"The user name is not valid."},
    {2250, u"There is no such network connection."},
    {4390, u"The object is no reparse point."},
    {4392, u"The data of the reparse point is not valid."},
};

constexpr TMessage ResultMessages[] = {
    {0x80004001u, u"This is not implemented."},
    {0x80004002u, u"The object does not have this interface."},
    {0x80004003u, u"A pointer is not valid."},
    {0x80004004u, u"The operation was ended."},
    {0x80004005u, u"The reason of the failure is not known."},
    {0x8000FFFFu, u"A failure that nobody expected."},
    {0x80030050u, u"There is a file with this name already."},
    {0x80040154u, u"The class is not registered."},
    {0x800401F0u, u"The component library was not started on this thread."},
    {0x80310000u, u"The drive is locked by its encryption."},
};

TStringView FindMessage(DWORD code) {
  if ((code & 0xFFFF0000u) == 0x80070000u) code &= 0xFFFF;
  const auto find = [code](const auto& table) -> TStringView {
    const auto found = std::lower_bound(
        std::begin(table), std::end(table), code,
        [](const TMessage& message, DWORD wanted) { return message.Code < wanted; });
    return found != std::end(table) && found->Code == code ? found->Text : TStringView();
  };
  return code < 0x80000000u ? find(Messages) : find(ResultMessages);
}

// The arguments of a message that has inserts: an array of values, or a list.
class TArguments {
 public:
  TArguments(va_list* list, bool isArray) {
    if (!list) return;
    fArray = isArray ? reinterpret_cast<const DWORD_PTR*>(list) : nullptr;
    fList = isArray ? nullptr : list;
  }
  // Number `index`, from 1 on. A list is read only as far as it is asked for.
  LPCWSTR Text(std::size_t index) {
    if (fArray) return reinterpret_cast<LPCWSTR>(fArray[index - 1]);
    while (fList && fRead.size() < index) fRead.push_back(va_arg(*fList, LPCWSTR));
    return fList ? fRead[index - 1] : nullptr;
  }

 private:
  const DWORD_PTR* fArray = nullptr;
  va_list* fList = nullptr;
  std::vector<LPCWSTR> fRead;
};

// Inserts are texts ("%1" to "%99"); "%n" ends a line, "%0" the message, and any
// other character after "%" stands for itself.
TString WithInserts(TStringView message, TArguments& arguments) {
  TString result;
  for (std::size_t i = 0; i < message.size(); ++i) {
    if (message[i] != u'%' || i + 1 == message.size()) {
      result += message[i];
      continue;
    }
    const char16_t next = message[++i];
    if (next == u'0') break;
    if (next == u'n') {
      result += u"\r\n";
    } else if (next >= u'1' && next <= u'9') {
      std::size_t number = static_cast<std::size_t>(next - u'0');
      if (i + 1 < message.size() && message[i + 1] >= u'0' && message[i + 1] <= u'9')
        number = number * 10 + static_cast<std::size_t>(message[++i] - u'0');
      const TStringView format = message.substr(i + 1);
      if (StartsWith(format, u"!s!")) i += 3;
      result += ViewOf(arguments.Text(number));
    } else {
      result += next;
    }
  }
  return result;
}

// The message's text before inserts; empty with last error set if there is none.
TString SourceText(DWORD flags, LPCVOID source, DWORD code) {
  if (flags & FORMAT_MESSAGE_FROM_STRING) return TString(ViewOf(static_cast<LPCWSTR>(source)));
  const TStringView text = flags & FORMAT_MESSAGE_FROM_SYSTEM ? FindMessage(code) : TStringView();
  if (text.empty()) {
    // No library here holds a message table.
    const bool moduleOnly = (flags & FORMAT_MESSAGE_FROM_SYSTEM) == 0;
    detail::SetLastErrorDirect(moduleOnly ? ERROR_RESOURCE_TYPE_NOT_FOUND : ErrorMessageNotFound);
    return {};
  }
  const bool oneLine = (flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) != 0;
  return TString(text) + (oneLine ? u"" : u"\r\n");
}

DWORD STDAPICALLTYPE FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD, LPWSTR buffer,
                                    DWORD capacity, va_list* list) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    constexpr DWORD sources =
        FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_FROM_HMODULE;
    if (!buffer || (flags & sources) == 0) return FailWith<DWORD>(ERROR_INVALID_PARAMETER, 0);
    TString text = SourceText(flags, source, code);
    if (text.empty()) return 0;
    if ((flags & FORMAT_MESSAGE_IGNORE_INSERTS) == 0) {
      TArguments arguments(list, (flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0);
      text = WithInserts(text, arguments);
    }
    const auto length = static_cast<DWORD>(text.size());
    if (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) {
      const std::size_t room = std::max<std::size_t>(capacity, text.size() + 1);
      auto* block = static_cast<LPWSTR>(CoTaskMemAlloc(room * sizeof(WCHAR)));
      *reinterpret_cast<LPWSTR*>(buffer) = block;
      return CopyText(text, block, room) ? length : FailWith<DWORD>(ERROR_NOT_ENOUGH_MEMORY, 0);
    }
    return CopyText(text, buffer, capacity) ? length
                                            : FailWith<DWORD>(ERROR_INSUFFICIENT_BUFFER, 0);
  });
}

// Blocks that the system hands out to be freed in this way are task memory here.
HLOCAL STDAPICALLTYPE LocalFree(HLOCAL block) {
  CoTaskMemFree(block);
  return nullptr;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemMessages(TApi& api) {
  BIND(FormatMessageW);
  BIND(LocalFree);
}
#undef BIND

}  // namespace oak
