#!/bin/sh
# Plants one fault of each kind in a small tree and expects tools/check_layers to name each.
#   check_layers_test.sh CHECK_LAYERS
set -eu
check=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/oak/base" "$tree/oak/platform/portable" "$tree/oak/platform/windows" \
  "$tree/oak/namespace" "$tree/oak/threading" "$tree/oak/views" "$tree/testkit" "$tree/tests/base"
failed=0

# expect STATUS PATTERN FILE TEXT: the tree with that one file gives that status and line.
expect() {
  printf "$4" >"$tree/$3"
  status=0
  output=$("$check" "$tree") || status=$?
  if [ "$status" -ne "$1" ] || ! printf '%s\n' "$output" | grep -q -- "$2"; then
    printf 'FAILED: %s\n  status %s, expected %s and "%s"\n%s\n' "$3" "$status" "$1" "$2" "$output"
    failed=1
  fi
  rm "$tree/$3"
}

seq 1 600 | sed 's/.*/int a;/' >"$tree/longest.txt"

# Allowed.
expect 0 'no fault' oak/namespace/A.cpp '#include "oak/base/Text.h"\n#include "oak/platform/Api.h"\n'
expect 0 'no fault' oak/namespace/A.cpp '#include "oak/threading/ThreadPool.h"\n'
expect 0 'no fault' oak/threading/OakWorkItems.cpp '#include "oak/namespace/FolderTrek.h"\n'
expect 0 'no fault' oak/platform/Api.cpp '#ifdef _WIN32\n#endif\n#include "oak/platform/portable/X.h"\n'
expect 0 'no fault' oak/platform/windows/A.cpp '#include <windows.h>\n'
expect 0 'no fault' testkit/A.cpp '#include "oak/platform/portable/PortableShell.h"\n'
expect 0 'no fault' oak/base/A.cpp "$(cat "$tree/longest.txt")\n"

# Not allowed.
expect 1 '^oak/base/A.cpp:2: base must not include platform' oak/base/A.cpp '\n#include "oak/platform/Api.h"\n'
expect 1 'must not include views' oak/namespace/A.cpp '#include "oak/views/ShellControls.h"\n'
expect 1 'must not include namespace' oak/threading/ThreadPool.cpp '#include "oak/namespace/FolderTrek.h"\n'
expect 1 'must not include testkit' oak/views/A.cpp '#include "testkit/ScopedApi.h"\n'
expect 1 'lower part of threading' oak/threading/ThreadPool.cpp '#include "oak/threading/OakWorkItems.h"\n'
expect 1 'only platform/portable' oak/namespace/A.cpp '#include "oak/platform/portable/X.h"\n'
expect 1 'only platform/portable' oak/platform/windows/A.cpp '#include "oak/platform/portable/X.h"\n'
expect 1 'path from the root' oak/namespace/A.cpp '#include "FolderTrek.h"\n'
expect 1 'without a layer' oak/views/A.cpp '#include "oak/widgets/X.h"\n'
expect 1 'below the seam' oak/namespace/A.cpp '#if defined(_WIN32)\n#endif\n'
expect 1 'Windows header <shlobj.h>' oak/namespace/A.cpp '#include <shlobj.h>\n'
expect 1 'fixed buffers' oak/namespace/A.cpp 'WCHAR path[MAX_PATH];\n'
expect 1 'clock of the seam' tests/base/A.cpp 'std::this_thread::sleep_for(x);\n'
expect 1 'pragma once' oak/base/A.h 'int a;\n'
expect 1 'carriage return' oak/base/A.cpp 'int a;\r\n'
expect 1 'blanks' oak/base/A.cpp 'int a; \n'
expect 1 '601 lines' oak/base/A.cpp "$(cat "$tree/longest.txt")\nint b;\n"
expect 1 'unfinished' oak/base/A.cpp '// TODO: implement\n'
exit $failed
