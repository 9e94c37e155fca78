# The program has a WinMain of its own, and shows what the explorer shows.
set_target_properties(embedding PROPERTIES WIN32_EXECUTABLE ON)
target_sources(embedding PRIVATE explorer/FolderList.cpp
  explorer/FolderList.Commands.cpp explorer/ObjectDrop.cpp explorer/PlaceTree.cpp)
