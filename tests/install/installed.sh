#!/usr/bin/env bash
# Installs the build, moves the installation elsewhere, and builds and runs the examples against it, by
# pkg-config and by find_package: installed.sh SOURCE BUILD CC CXX
set -euo pipefail
source_dir=$1 build_dir=$2 cc=$3 cxx=$4

home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
cmake --install "$build_dir" --prefix "$home/first" > /dev/null
mv "$home/first" "$home/moved"
libdir=$(dirname "$(find "$home/moved" -name 'libqbobj.so')")
unset LD_LIBRARY_PATH

echo "-- the installed command line finds its libraries"
"$home/moved/bin/qbobj" init "$home/tool.db"
"$home/moved/bin/qbobj" completion bash | cmp - "$home/moved/share/bash-completion/completions/qbobj"
"$home/moved/bin/qbobj" completion zsh | cmp - "$home/moved/share/zsh/site-functions/_qbobj"

echo "-- the Python package finds its library, and tells its version"
PYTHONPATH=$home/moved/lib/python3/dist-packages /usr/bin/python3 -B "$source_dir/examples/users.py" "$home/python.db"
PYTHONPATH=$home/moved/lib/python3/dist-packages /usr/bin/python3 -B -c '
import importlib.metadata, qbobj
assert importlib.metadata.version("qbobj") == qbobj.__version__
assert qbobj._library.library._name.startswith(qbobj.__file__.split("/lib/")[0]), qbobj._library.library._name'

# It names no more than libqbobj: that one has to find libqbdb by itself.
echo "-- a program that only asks what there is"
cat > "$home/introspect.c" << 'END'
#include <qbobj.h>
#include <stdio.h>

int main(void)
{
    size_t count = 0;
    for (const QbobjOperation *row = qbobj_operations(); row->name; row++) count++;
    printf("%zu operations\n", count);
    return count == 0;
}
END
# shellcheck disable=SC2046
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror "$home/introspect.c" -o "$home/introspect" \
  $(pkg-config --cflags apr-1) -I"$home/moved/include" -L"$libdir" -lqbobj -Wl,--enable-new-dtags,-rpath,"$libdir"
"$home/introspect"

export LD_LIBRARY_PATH=$libdir

echo "-- by pkg-config"
export PKG_CONFIG_PATH=$libdir/pkgconfig
flags=$(pkg-config --cflags --libs qbobj)
# shellcheck disable=SC2086
"$cc" -std=c11 -Wall -Wextra -pedantic -Werror "$source_dir/examples/log.c" -o "$home/log" $flags
# shellcheck disable=SC2086
"$cxx" -std=c++17 -Wall -Wextra -pedantic -Werror "$source_dir/examples/types.cpp" -o "$home/types" $flags
# shellcheck disable=SC2086
"$cxx" -std=c++20 -Wall -Wextra -pedantic -Werror "$source_dir/examples/users.cpp" -o "$home/users" $flags
"$home/log" "$home/one.db"
"$home/users" "$home/users.db"
"$home/types" | tail -n 1

echo "-- by find_package"
cmake -S "$source_dir/examples" -B "$home/build" -DCMAKE_PREFIX_PATH="$home/moved" \
  -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" > /dev/null
cmake --build "$home/build" > /dev/null
"$home/build/log" "$home/two.db"
"$home/build/users" "$home/more_users.db"
"$home/build/types" | tail -n 1

echo "-- nothing in the installation names the build"
if grep -rlI -e "$build_dir" -e "$home/first" "$home/moved"; then exit 1; fi
for library in "$libdir"/libqb*.so; do
  if strings -a "$library" | grep -e "$source_dir/"; then exit 1; fi
done
# SPDX-License-Identifier: Apache-2.0
