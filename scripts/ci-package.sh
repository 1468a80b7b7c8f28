#!/usr/bin/env bash
# CI: the Debian packages as a host application meets them. Builds them from
# the build `make test` made, unpacks the three into a scratch root, checks what
# they hold and declare and what the installed library exports, builds
# examples/host against the unpacked files three ways (CMake with the shared
# library, CMake with the static library, make with pkg-config), and runs each
# build against the packaged `tavrin sandbox`; and the same for examples/c-host,
# the C host, built with CMake and with pkg-config.
set -euo pipefail
cd "$(dirname "$0")/.."
source=$PWD
build=${BUILD:-build}

make --no-print-directory package BUILD="$build"

scratch=$(mktemp -d "${TMPDIR:-/tmp}/tavrin-package.XXXXXX")
sandbox_pid=
cleanup() {
  if [[ -n $sandbox_pid ]]; then kill -TERM "$sandbox_pid" 2>/dev/null || true; fi
  rm -rf "$scratch"
}
trap cleanup EXIT
fail() {
  echo "ci-package: $*" >&2
  exit 1
}

# --- The packages: names, dependencies, contents --------------------------------
version=$(sed -n 's/^project(tavrinsdk VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
arch=$(dpkg --print-architecture)
runtime_deb=$build/packages/tavrinsdk_${version}_${arch}.deb
dev_deb=$build/packages/tavrinsdk-dev_${version}_${arch}.deb
tools_deb=$build/packages/tavrin-tools_${version}_${arch}.deb
for deb in "$runtime_deb" "$dev_deb" "$tools_deb"; do [[ -f $deb ]] || fail "expected $deb"; done

runtime_depends=$(dpkg-deb --field "$runtime_deb" Depends)
dev_depends=$(dpkg-deb --field "$dev_deb" Depends)
tools_depends=$(dpkg-deb --field "$tools_deb" Depends)
echo "tavrinsdk depends: $runtime_depends"
echo "tavrinsdk-dev depends: $dev_depends"
echo "tavrin-tools depends: $tools_depends"
# What dpkg-shlibdeps reads from the library: its own dependencies, and none of
# the devkit's (the sandbox's HTTP server and database).
for package in libc6 libstdc++6 libcurl4 libicu zlib1g libdeflate0 liblzma5 liblz4-1 libssl3; do
  [[ $runtime_depends == *"$package"* ]] || fail "tavrinsdk does not depend on $package"
done
for package in libsqlite3 libcpp-httplib; do
  [[ $runtime_depends != *"$package"* ]] || fail "tavrinsdk depends on $package"
  [[ $tools_depends == *"$package"* ]] || fail "tavrin-tools does not depend on $package"
done
[[ $dev_depends == *"tavrinsdk (= $version)"* ]] || fail "tavrinsdk-dev does not depend on tavrinsdk (= $version)"
dpkg-deb --ctrl-tarfile "$runtime_deb" | tar -t | grep -qx './shlibs' || fail "tavrinsdk has no shlibs file"

# Each package holds what it is for: the runtime package the shared library
# alone, the tools package the tool, the development package the interface.
contents() { dpkg-deb --contents "$1" | awk '{print $6}' | grep -v '/$' | grep -v '^\./usr/share/doc/'; }
check_contents() {  # package, the pattern every file of it must match
  local unexpected
  unexpected=$(contents "$1" | grep -Ev "^\./usr/($2)$" || true)
  [[ -z $unexpected ]] || fail "unexpected files in $(basename "$1"):"$'\n'"$unexpected"
}
check_contents "$runtime_deb" 'lib/libtavrinsdk\.so\.[0-9.]+'
check_contents "$tools_deb" 'bin/tavrin'
check_contents "$dev_deb" 'lib/libtavrinsdk\.(so|a)|include/tavrin/.+\.hpp|include/tavrin/tavrin\.h|lib/cmake/tavrinsdk/tavrinsdk-[a-z-]+\.cmake|lib/pkgconfig/tavrinsdk\.pc'

root=$scratch/root
for deb in "$runtime_deb" "$dev_deb" "$tools_deb"; do dpkg -x "$deb" "$root"; done
prefix=$root/usr
library=$(readlink -f "$prefix/lib/libtavrinsdk.so")
cmake -DLIBRARY="$library" -DHEADERS="$prefix/include" -DSONAME="libtavrinsdk.so.${version%%.*}" \
  -P cmake/CheckExports.cmake

# --- The example host, built against the unpacked files --------------------------
host_shared=$scratch/cmake-shared/tavrin-host
host_static=$scratch/cmake-static/tavrin-host
host_pkgconfig=$scratch/pkg-config/tavrin-host
cmake -S examples/host -B "$scratch/cmake-shared" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/cmake-shared"
cmake -S examples/host -B "$scratch/cmake-static" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
  -DTAVRIN_HOST_STATIC=ON >/dev/null
cmake --build "$scratch/cmake-static"
# The .pc file names /usr; --define-prefix moves its paths to where it was found.
mkdir -p "$scratch/pkg-config"
PKG_CONFIG_PATH=$prefix/lib/pkgconfig \
  make --no-print-directory -C examples/host OUT="$scratch/pkg-config" \
  PKG_CONFIG="pkg-config --define-prefix"
c_host_cmake=$scratch/c-cmake/tavrin-c-host
c_host_pkgconfig=$scratch/c-pkg-config/tavrin-c-host
cmake -S examples/c-host -B "$scratch/c-cmake" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$scratch/c-cmake"
mkdir -p "$scratch/c-pkg-config"
PKG_CONFIG_PATH=$prefix/lib/pkgconfig \
  make --no-print-directory -C examples/c-host OUT="$scratch/c-pkg-config" \
  PKG_CONFIG="pkg-config --define-prefix"
static_libs=$(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --define-prefix --static --libs tavrinsdk)
[[ $static_libs == *-lcurl* && $static_libs == *-licuuc* ]] ||
  fail "pkg-config --static gives no private libraries: $static_libs"

# The shared builds load the unpacked library; the static one needs none.
export LD_LIBRARY_PATH=$prefix/lib
for host in "$host_shared" "$host_pkgconfig" "$c_host_cmake" "$c_host_pkgconfig"; do
  ldd "$host" | grep -q "libtavrinsdk.so.${version%%.*} => $prefix/lib/" ||
    fail "$host does not load $prefix/lib/libtavrinsdk.so"
done
if readelf -d "$host_static" | grep -q 'NEEDED.*libtavrinsdk'; then
  fail "$host_static needs the shared library"
fi

# --- The hosts against the packaged sandbox --------------------------------------
coproc sandbox { exec "$prefix/bin/tavrin" sandbox --port 0 --db "$scratch/uploads.db" 2>"$scratch/sandbox.log"; }
sandbox_pid=$sandbox_PID
ready=
read -r -t 60 ready <&"${sandbox[0]}" || true
[[ $ready == "sandbox ready: "* ]] || { cat "$scratch/sandbox.log" >&2; fail "the sandbox did not start"; }
read -r -a service <<<"${ready#sandbox ready: }"  # --url U --resolve R --ca-file C
profile=$source/examples/profiles/iphone-realistic.json

for variant in shared static pkgconfig c_cmake c_pkgconfig; do
  host_var=host_$variant
  [[ $variant == c_* ]] && host_var=c_host_${variant#c_}
  record="host-$variant-1"
  answer=$("${!host_var}" "${service[@]}" --key sandbox-key --record "$record" --profile "$profile") ||
    { cat "$scratch/sandbox.log" >&2; fail "the $variant host failed"; }
  echo "$variant host: $answer"
  [[ $answer == *"$record"* ]] || fail "the $variant host's answer does not name $record"
done

# A refusal crosses the shared library as a TavrinError the host catches by type.
status=0
"$host_shared" "${service[@]}" --key wrong-key --record host-refused --profile "$profile" \
  2>"$scratch/refused.log" || status=$?
[[ $status == 1 ]] && grep -q '^tavrin-host: TavrinError\.' "$scratch/refused.log" ||
  fail "a wrong key gave status $status: $(cat "$scratch/refused.log")"
echo "refused: $(cat "$scratch/refused.log")"

kill -TERM "$sandbox_pid"
wait "$sandbox_pid" || fail "the sandbox did not stop cleanly"
sandbox_pid=
echo "ci-package: packages, exports and the example host are fine"
