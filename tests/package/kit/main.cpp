// Asserts, as a user's tests would, that an item made from a path costs no call, and that a form
// does what its user wants.
#include <iostream>

#include "oak/namespace/OakItemIdList.h"
#include "testkit/CallCounter.h"
#include "testkit/ScreenDriver.h"

namespace {

bool ItemsCostNothing() {
  const oak::testkit::TCallCounter calls;
  const auto item = oak::TOakItemIdList::Create(u"C:\\tmp\\some file.txt");
  std::cout << calls.ToString();
  return calls.Total() == 0 && item->Path() == u"C:\\tmp\\some file.txt";
}

bool FormsAreWorked() {
  const auto driver = oak::testkit::MakeScreenDriver();
  oak::TForm form;
  oak::TEdit edit;
  edit.SetParent(&form);
  form.Show();
  driver->Drain();
  driver->Click(edit, {5, 5});
  driver->TypeText(u"milk");
  return driver->TextOf(edit) == u"milk";
}

}  // namespace

int main() { return ItemsCostNothing() && FormsAreWorked() ? 0 : 1; }
