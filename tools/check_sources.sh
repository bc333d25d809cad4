#!/bin/sh
# usage: tools/check_sources.sh BUILD_DIRECTORY
#
# Sources are listed in CMake, not globbed: a file in no list compiles nowhere and is tested by nobody. A file counts
# as built when the developer build's compile database has it, or, for a project of its own, its CMakeLists.txt.
set -eu
cd "$(dirname "$0")/.."
database=$1/compile_commands.json
[ -f "$database" ] || {
    echo "$database is missing: configure the build first" >&2
    exit 1
}

status=0
for file in $(git ls-files --cached --others --exclude-standard '*.cpp' '*.c'); do
    if [ -f "$file" ] && ! grep -qF "/$file\"" "$database" &&
        ! grep -qsF "$(basename "$file")" "$(dirname "$file")/CMakeLists.txt"; then
        echo "$file is in no CMakeLists.txt: list it there or delete it" >&2
        status=1
    fi
done
exit "$status"
