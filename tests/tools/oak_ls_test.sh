#!/bin/sh
# Runs oak-ls on a small tree and compares what it says.
#   oak_ls_test.sh OAK_LS
set -eu
oak_ls=$1
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/real/folder.d" "$tree/real/ä b"
printf '12345' >"$tree/real/a.txt"
printf '' >"$tree/real/b.md"
printf '' >"$tree/real/.hidden.txt"
ln -s "$tree/real" "$tree/link"
failed=0

# expect STATUS "NAMES" ARGUMENT...: the listing's names, sorted, one blank between them.
expect() {
  status=0
  wanted_status=$1
  wanted=$2
  shift 2
  "$oak_ls" "$@" >"$tree/out" 2>"$tree/err" || status=$?
  names=$(sed -n 's/^[dl-]  .\{32\}  //p' "$tree/out" | sort | tr '\n' '|')
  if [ "$status" -ne "$wanted_status" ] || [ "$names" != "$wanted" ]; then
    printf 'FAILED: oak-ls %s\n  status %s, expected %s\n  "%s", expected "%s"\n' "$*" "$status" \
      "$wanted_status" "$names" "$wanted"
    cat "$tree/out" "$tree/err"
    failed=1
  fi
}

# says FILE PATTERN: the last run wrote it.
says() {
  grep -q -- "$2" "$tree/$1" || {
    printf 'FAILED: no "%s" in\n' "$2"
    cat "$tree/$1"
    failed=1
  }
}

expect 0 'a.txt|b.md|folder.d|ä b|' "$tree/real"
expect 0 '.hidden.txt|a.txt|b.md|folder.d|ä b|' --hidden "$tree/real"
expect 0 'a.txt|folder.d|ä b|' --filter '*.TXT;*.c' "$tree/real"
expect 0 'a.txt|b.md|folder.d|ä b|' --filesystem-only "$tree/real"
expect 0 'a.txt|b.md|folder.d|ä b|' --map "X=$tree/real" 'X:\'
expect 0 'a.txt|' --map "X=$tree/link" "$tree/link/a.txt"
expect 2 'a.txt|b.md|folder.d|ä b|' "$tree/none" "$tree/real"
says err 'cannot find ".*none"'
cd "$tree"
expect 0 'a.txt|b.md|folder.d|ä b|' real
expect 2 '' --map 'XY=/' .
expect 2 '' --no-such-option
expect 0 '' --json --map "X=$tree/real" --names 'X:\a.txt'
for key in '"name":"a.txt"' '"folder":false' '"path":"X:\\\\a.txt"' '"depth":3' \
  '"special":"SF_FILESYSTEMFOLDER"' '"attributes":\[.*"filesystem"' '"size":5' \
  '"modified":"20' '"target":null' '"dnfForExplorer":"::{20D04FE0'; do
  says out "$key"
done
if [ -c /dev/full ] && "$oak_ls" "$tree/real" >/dev/full 2>/dev/null; then
  echo 'FAILED: a full disk was not noticed'
  failed=1
fi
exit $failed
