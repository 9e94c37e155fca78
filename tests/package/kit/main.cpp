// Asserts, as a user's test would, that an item made from a path costs no call.
#include <iostream>

#include "oak/namespace/OakItemIdList.h"
#include "testkit/CallCounter.h"

int main() {
  const oak::testkit::TCallCounter calls;
  const auto item = oak::TOakItemIdList::Create(u"C:\\tmp\\some file.txt");
  std::cout << calls.ToString();
  return calls.Total() == 0 && item->Path() == u"C:\\tmp\\some file.txt" ? 0 : 1;
}
