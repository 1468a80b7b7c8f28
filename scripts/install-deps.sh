#!/usr/bin/env bash
# Installs the Debian 12 packages the build, the tests and the benchmarks need,
# and the ones named as arguments (what a single make target needs besides:
# dpkg-dev and file for `make package`, doxygen for `make docs`).
# Idempotent: does nothing (and prints nothing) when every package is present.
set -euo pipefail

packages=(
  cmake ninja-build g++ clang-14 libclang-rt-14-dev clang-format pkg-config
  zlib1g-dev liblzma-dev liblz4-dev libcurl4-openssl-dev libicu-dev libssl-dev
  nlohmann-json3-dev libsimdjson-dev libcpp-httplib-dev libsqlite3-dev libcli11-dev
  libgtest-dev libgmock-dev libbenchmark-dev rapidjson-dev libdeflate-dev
  gzip xz-utils openssl ca-certificates python3 python3-jsonschema python3-pytest abigail-tools
  libebook1.2-dev libecal2.0-dev evolution-data-server dbus-daemon
  libexiv2-dev libgstreamer-plugins-base1.0-dev gstreamer1.0-plugins-good libmm-glib-dev
  mobile-broadband-provider-info gsettings-desktop-schemas python3-dbusmock
  default-jdk-headless junit5
  "$@"
)

missing=()
for p in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$p" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$p")
done
((${#missing[@]} == 0)) && exit 0

echo "installing: ${missing[*]}"
sudo_cmd=()
((EUID == 0)) || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
