#!/usr/bin/env bash
# One release bundle: the library of a finished build, its header, CMake package and pkg-config
# file (as `cmake --install` lays them out), the C# binding, the licence texts of what is linked
# in, and a short README. Used by `make dist`.
#
#   tools/dist.sh PLATFORM BUILD_DIR OUT_DIR LICENCE_PACKAGE...
#
# PLATFORM names the bundle (linux-x86_64, linux-arm64, windows-x86_64); windows-* bundles are
# zip files, the others tar.gz. The licence texts are the Debian copyright files of the packages
# named, which are installed wherever the build's dependencies came from.
set -euo pipefail

platform=$1
build=$2
out=$3
shift 3
root=$(cd "$(dirname "$0")/.." && pwd)

version=$(sed -n 's/^project(Zando VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
name="zando-$version-$platform"
stage="$out/$name"
rm -rf "$stage"
mkdir -p "$stage"

cmake --install "$build" --prefix "$stage" --strip >/dev/null
mkdir -p "$stage/bindings/csharp" "$stage/licences"
cp "$root/bindings/csharp/Zando.cs" "$stage/bindings/csharp/"
for package in "$@"; do
  copyright="/usr/share/doc/$package/copyright"
  if [ ! -f "$copyright" ]; then
    echo "dist: no licence text for $package ($copyright)" >&2
    exit 1
  fi
  cp "$copyright" "$stage/licences/$package.txt"
done

case $platform in
  windows-*)
    library="bin/zando.dll (import library: lib/libzando.dll.a)"
    needs="Nothing beyond Windows itself: the compiler runtime and the ZIP library are linked in."
    use="From C#: put bin/zando.dll and bindings/csharp/Zando.cs in the engine project (the DLL in its
folder for 64-bit Windows plug-ins). From C or C++: link lib/libzando.dll.a (or find_package(Zando)
with this folder on CMAKE_PREFIX_PATH) and ship bin/zando.dll with the program."
    ;;
  *)
    library="lib/libzando.so"
    needs="A Linux with glibc 2.36 or newer and libzip 1.7 (Debian and Ubuntu: the libzip4 package);
         bin/zando, the command-line tool, also needs libfmt 9 (libfmt9)."
    use="From CMake: list(APPEND CMAKE_PREFIX_PATH /path/to/$name), then find_package(Zando) and link
Zando::zando. From a makefile: PKG_CONFIG_PATH=/path/to/$name/lib/pkgconfig pkg-config --cflags --libs
zando. From C#: bindings/csharp/Zando.cs with lib/libzando.so on the library path."
    ;;
esac
cat > "$stage/README.txt" <<EOF
Zando $version for $platform

3D hand-motion gesture recognition: record gestures, train, save, and identify or detect them in
running motion. The flat C functions and the C++ interfaces are declared in include/zando/zando.h.

Library: $library
Needs:   $needs

$use

licences/ holds the licence texts of the libraries compiled or linked into Zando.
EOF

rm -f "$out/$name.zip" "$out/$name.tar.gz"
case $platform in
  windows-*) (cd "$out" && zip -qr "$name.zip" "$name") && echo "$out/$name.zip" ;;
  *) tar -C "$out" -czf "$out/$name.tar.gz" "$name" && echo "$out/$name.tar.gz" ;;
esac
