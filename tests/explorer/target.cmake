# The parts of the example under test.
target_sources(test-explorer PRIVATE
  ${PROJECT_SOURCE_DIR}/examples/explorer/ExplorerForm.cpp
  ${PROJECT_SOURCE_DIR}/examples/explorer/FolderList.cpp
  ${PROJECT_SOURCE_DIR}/examples/explorer/FolderList.Commands.cpp
  ${PROJECT_SOURCE_DIR}/examples/explorer/ObjectDrop.cpp
  ${PROJECT_SOURCE_DIR}/examples/explorer/PlaceTree.cpp)
