#!/usr/bin/env bash
# pack.sh FOLDER ARCHIVE: see pack.cmake
set -euo pipefail
folder=$1 archive=$2 name=$(basename "$1")
export LC_ALL=C TZ=UTC
cd "$folder/.."
chmod -R u=rwX,go=rX "$name"
find "$name" -exec touch --date="@${SOURCE_DATE_EPOCH:-$(date +%s)}" {} +
rm -f "$archive"
case $archive in
*.zip) find "$name" | sort | zip -q -X -@ "$archive" ;;
*) find "$name" | sort |
    tar --create --no-recursion --files-from=- --owner=0 --group=0 --numeric-owner | gzip -9n >"$archive" ;;
esac
