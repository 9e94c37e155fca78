#include "oak/base/TypeName.h"

#include <cstdlib>
#include <memory>
#include <string>

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#endif

namespace oak {
namespace {

std::string ReadableName(const char* name) {
#if __has_include(<cxxabi.h>)
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> text(
      abi::__cxa_demangle(name, nullptr, nullptr, &status), &std::free);
  if (text) return text.get();
#endif
  return name;  // Other compilers store it readable, with the kind of type in front.
}

void RemoveAll(std::string& text, const std::string& part) {
  for (std::size_t at; (at = text.find(part)) != std::string::npos;) text.erase(at, part.size());
}

}  // namespace

TString TypeName(const std::type_info& type) {
  std::string name = ReadableName(type.name());
  for (const char* part : {"class ", "struct ", "(anonymous namespace)::", "oak::"})
    RemoveAll(name, part);
  return FromUtf8(name);
}

}  // namespace oak
