#include <iostream>

#include "oak/base/Exceptions.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

int main(int argc, char** argv) try {
  // Any text that the shell understands: a path, "This PC", "::{20D04FE0-...}",
  // "Documents\\Letters".
  const Ref<IItemIdList> place = TOakItemIdList::Parse(FromUtf8(argc > 1 ? argv[1] : "C:\\"));
  std::cout << ToUtf8(place->DisplayName(dnfForExplorer)) << '\n';

  TFolderTrek trek;               // a cursor: on one folder, and on one object in it
  trek.SetFilter(u"*.txt;*.md");  // folders always pass
  trek.SetFolderIdList(place);
  while (trek.Next()) {
    const Ref<IItemIdList> item = trek.GetAbsoluteItemIdList();
    std::cout << (trek.IsFolder() ? "  > " : "    ") << ToUtf8(item->DisplayName(dnfInFolder))
              << "  (" << ToUtf8(item->Path()) << ")\n";
  }
} catch (const EFolderTrekError& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
