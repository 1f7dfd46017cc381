#!/usr/bin/env bash
# What scripts/test-packages tests, in a fresh Debian system: the packages are in /srv/packages, and the
# texts and examples that it uses in /srv/source.
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive SDL_VIDEODRIVER=dummy HOME=/tmp/home XDG_RUNTIME_DIR=/tmp/run
mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR"
source_folder=/srv/source repository=/srv/repository log=/tmp/log

fail() {
    echo "test-packages: $*" >&2
    exit 1
}

step() {
    echo "test-packages: $*"
}

# quietly COMMAND…: shows what it said only when it fails.
quietly() {
    "$@" >"$log" 2>&1 && return 0
    if grep -qi "no space left\|enough free space" "$log"; then
        echo "test-packages: there is no space left for the system: it needs two gigabytes" >&2
        exit 2
    elif grep -q "^E: Failed to fetch" "$log"; then
        echo "test-packages: Debian's packages cannot be fetched: is there a network?" >&2
        exit 2
    fi
    tail -n 30 "$log" >&2
    fail "failed: $*"
}

install_packages() {
    quietly apt-get install --yes --no-install-recommends "$@"
}

# offer VERSION-SUFFIX: apt finds the packages with their version, or an older one "~before".
offer() {
    rm -rf $repository
    mkdir $repository
    local package
    for package in /srv/packages/*.deb; do
        if [ -z "$1" ]; then
            cp "$package" $repository
        else
            rm -rf /tmp/package
            dpkg-deb --raw-extract "$package" /tmp/package
            sed -i "s/^Version: .*/&$1/; s/(= \([^)]*\))/(= \1$1)/g" /tmp/package/DEBIAN/control
            dpkg-deb --root-owner-group -Znone --build /tmp/package $repository >/dev/null
        fi
    done
    (cd $repository && dpkg-scanpackages --multiversion . >Packages 2>"$log") || fail "$(<"$log")"
    echo "deb [trusted=yes] file:$repository ./" >/etc/apt/sources.list.d/tav.list
    quietly apt-get update -o Dir::Etc::sourcelist=/etc/apt/sources.list.d/tav.list \
        -o Dir::Etc::sourceparts=- -o APT::Get::List-Cleanup=0
}

# block FILE LANGUAGE [NAME]: the first such block of a text.
block() {
    awk -v fence="^\`\`\`$2${3:+ $3}\$" '/^```/ && found { exit } found { print } $0 ~ fence { found = 1 }' \
        "$source_folder/$1"
}

await() {
    for _ in {1..600}; do
        ! "$@" >/dev/null 2>&1 || return 0
        sleep 0.1
    done
    fail "waited a minute for: $*"
}

# Everything that is installed, but for what apt and dpkg keep for themselves, and what systemd and ssh,
# on which packages depend, leave behind.
list_files() {
    find / -xdev \( -path /srv -o -path /var/lib/dpkg -o -path /var/lib/apt -o -path /var/cache \
        -o -path /var/log -o -path /var/lib/systemd -o -path /var/lib/private -o -path /etc/machine-id \
        -o -path /etc/mtab -o -path /root/.ssh \) -prune -o -print | sort
}

# start WHAT PROGRAM…: runs it by itself, on this machine's buses, until its trace shows WHAT.
start() {
    : >/tmp/trace
    TAV_TRACE=tav_f "${@:2}" >>/tmp/trace 2>&1 &
    process=$!
    await grep "$1" /tmp/trace
}

# It ends when it is asked to, with status 0.
stop() {
    kill -TERM $process
    wait $process || fail "it ended with status $?: $(tail -n 5 /tmp/trace)"
}

# make_package FOLDER NAME WHAT: an application becomes a package, and is installed and started.
make_package() {
    step "the application $2 as a package"
    cd "$1"
    quietly apt-get build-dep --yes --no-install-recommends ./
    quietly dpkg-buildpackage --build=binary --unsigned-source --unsigned-changes
    install_packages ../"$2"_*.deb
    quietly desktop-file-validate /usr/share/applications/*.desktop
    cd /tmp/work
    local command program
    read -ra command <<<"$(grep '^Exec=' "$(dpkg --listfiles "$2" | grep '\.desktop$')" | cut -d = -f 2-)"
    start "$3" env PATH="$PATH:/usr/games" "${command[@]}"
    stop
    program=$(dpkg --listfiles "$2" | grep -E '^/usr/(bin|games)/')
    tavsim test "$program"
}

dbus-daemon --session --address="${DBUS_SESSION_BUS_ADDRESS=unix:path=/tmp/run/session}" --fork
dbus-daemon --session --address="${DBUS_SYSTEM_BUS_ADDRESS=unix:path=/tmp/run/system}" --fork
export DBUS_SESSION_BUS_ADDRESS DBUS_SYSTEM_BUS_ADDRESS
# A compass that turns by 10 degrees at a time.
printf 'P: /devices/virtual/input/input0\nE: SUBSYSTEM=input\nE: NAME="Power Button"\nA: name=Power Button\n\n' >/tmp/devices
FAKE_COMPASS=1 umockdev-run --device /tmp/devices -- /usr/sbin/iio-sensor-proxy >/dev/null 2>&1 &
await dbus-send --bus="$DBUS_SYSTEM_BUS_ADDRESS" --print-reply --dest=net.hadess.SensorProxy \
    /net/hadess/SensorProxy/Compass org.freedesktop.DBus.Peer.Ping

mkdir /tmp/work
cd /tmp/work
block README.md c >heading.c
block docs/testing.md c >north.c
block docs/testing.md json still.json >still.json
block docs/testing.md text east.scenario >east.scenario
cat >CMakeLists.txt <<'END'
cmake_minimum_required(VERSION 3.22)
project(north LANGUAGES C)
include(CTest)
find_package(tav 3.0 REQUIRED)
add_executable(north north.c)
target_link_libraries(north PRIVATE tav::tav)
if(TARGET tav::tavsim)
    tavsim_add_test(east east.scenario PROGRAM north)
endif()
END

offer '~before'
list_files >/tmp/files
dpkg-query --show --showformat '${Package}\n' >/tmp/packages

step "libtav-dev of the version before, and programs built with pkg-config and with CMake"
install_packages libtav-dev
! command -v tavsim || fail "libtav-dev needs tavsim"
quietly sh -c 'cc -o heading heading.c $(pkg-config --cflags --libs tav)'
quietly sh -c 'cmake -S . -B build && cmake --build build'
./heading >/tmp/printed
grep -q '^reading 3: .*0\.0 degrees$' /tmp/printed || fail "by itself it printed: $(</tmp/printed)"

step "an upgrade while a program runs"
start compassCallback build/north
offer ''
install_packages --only-upgrade libtav3 libtav-dev
grep -q 'libtav\.so.*(deleted)' /proc/$process/maps || fail "the upgrade did not replace the library"
: >/tmp/trace
await grep compassCallback /tmp/trace
stop
./heading >/tmp/printed
grep -q '^reading 3' /tmp/printed || fail "after the upgrade it printed: $(</tmp/printed)"
# Another number of the library is another package, with other files.
! dpkg --listfiles libtav3 | grep -vE '/libtav(linux)?\.so\.3(\.|$)|/doc/libtav3(/|$)' | xargs ls -d --file-type |
    grep -v '/$' || fail "libtav3 holds files that another version has as well"

step "tavsim"
install_packages tavsim
tavsim run --device cinnabar --virtual-time ./heading >/tmp/printed
grep '^reading ' "$source_folder/README.md" | diff - /tmp/printed || fail "README.md shows something else"
cp build/north .
tavsim test east.scenario
quietly sh -c 'cmake -S . -B build && cmake --build build && ctest --test-dir build --no-tests=error'
mapfile -t offered < <(sed -n 's/^Package: //p' $repository/Packages | grep -v -- -dbgsym)
install_packages "${offered[@]}"
for program in tavsim tavsim-panel tav-page; do
    quietly $program --help
    quietly $program --version
done
! [[ " ${offered[*]} " = *" python3-tavsim "* ]] || python3 -c 'import tavsim'

cp -R $source_folder/examples/cache-hunt /tmp
make_package /tmp/cache-hunt cache-hunt compassCallback
quietly tavsim run --virtual-time --scenario /usr/share/cache-hunt/tests/walk.scenario /usr/games/cache-hunt
quietly tavsim new /tmp/star-map
make_package /tmp/star-map star-map TAV_GetScreenMetrics

step "removed and purged"
dpkg-query --show --showformat '${Package}\n' | comm -13 /tmp/packages - >/tmp/added
grep -qx libtav3 /tmp/added
quietly xargs apt-get remove --yes </tmp/added
quietly xargs dpkg --purge </tmp/added
list_files | diff /tmp/files - || fail "something stays"
