#!/usr/bin/env bash
# Installs the Debian packages that a build of omtree needs and that are not there yet.
#
#     tools/setup.sh [PACKAGE...]
#
# Packages named on the line are wanted besides the usual ones. Does nothing, quickly, when all of them are installed.
# Without the right to install, it names what is missing on standard error and ends with status 1.
set -euo pipefail

packages=(
    g++ cmake ninja-build python3
    libgtest-dev libgmock-dev librapidcheck-dev
    libcli11-dev libcsv-dev libpugixml-dev
    "$@"
)
# Any awk will do; Debian's smallest is taken when there is none.
command -v awk >/dev/null || packages+=(mawk)

if ! command -v dpkg-query >/dev/null; then
    echo "tools/setup.sh: no Debian machine; install the like of these by hand: ${packages[*]}" >&2
    exit 1
fi

# dpkg-query ends with status 1 when it does not know one of the names, which is no failure here.
installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${packages[@]}" 2>/dev/null || true)
missing=()
for package in "${packages[@]}"; do
    grep -qxF "installed $package" <<<"$installed" || missing+=("$package")
done
[ "${#missing[@]}" -gt 0 ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=(env)
elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
    as_root=(sudo -n env)
else
    echo "tools/setup.sh: missing packages, install them as root: apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq </dev/null
"${as_root[@]}" DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
