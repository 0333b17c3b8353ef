#!/bin/sh
# Proves the README's two commands on a new machine: builds a minimal Debian 12
# root, adds only make, git, g++ and cmake, clones this repo's committed HEAD into
# it and runs `make demo` then `make test` there. Needs root (debootstrap, chroot).
#
#   sh scripts/fresh-check.sh            # root in /var/tmp/zelvarine-fresh, removed after
#   FRESH_ROOT=/path KEEP=1 sh ...       # elsewhere, and kept for a look afterwards
set -eu

REPO=$(cd "$(dirname "$0")/.." && pwd)
ROOT=${FRESH_ROOT:-/var/tmp/zelvarine-fresh}
SUITE=bookworm

say() { echo "fresh-check: $*"; }
fail() { echo "fresh-check: $*" >&2; exit 2; }

[ "$(id -u)" -eq 0 ] || fail "must run as root (debootstrap and chroot need it)"

if ! command -v debootstrap >/dev/null 2>&1; then
    say "installing debootstrap"
    DEBIAN_FRONTEND=noninteractive apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends debootstrap
fi

# The mirror apt already uses here, from either the one-line or the deb822 form.
mirror_of() {
    suite=$1
    for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
        [ -f "$f" ] || continue
        m=$(awk -v s="$suite" '$1 == "deb" && $3 == s { print $2; exit }' "$f")
        [ -n "$m" ] && { echo "$m"; return; }
    done
    for f in /etc/apt/sources.list.d/*.sources; do
        [ -f "$f" ] || continue
        m=$(awk -v s="$suite" '
            /^[[:space:]]*$/ { if (uri != "" && hit) { print uri; exit } uri = ""; hit = 0; next }
            $1 == "URIs:" { uri = $2 }
            $1 == "Suites:" { for (i = 2; i <= NF; i++) if ($i == s) hit = 1 }
            END { if (uri != "" && hit) print uri }' "$f" | head -n 1)
        [ -n "$m" ] && { echo "$m"; return; }
    done
}
MIRROR=$(mirror_of "$SUITE")
SECURITY=$(mirror_of "$SUITE-security")
[ -n "$MIRROR" ] || fail "no apt source for $SUITE found in /etc/apt"

if [ -n "$(git -C "$REPO" status --porcelain --untracked-files=no)" ]; then
    say "warning: uncommitted changes are not part of the check; it clones HEAD"
fi

mounted=""
cleanup() {
    for m in $mounted; do umount -l "$ROOT/$m" 2>/dev/null || true; done
    if [ -z "${KEEP:-}" ]; then rm -rf "$ROOT"; fi
}
trap cleanup EXIT INT TERM

rm -rf "$ROOT"
mkdir -p "$ROOT"
say "building a minimal $SUITE root in $ROOT from $MIRROR"
debootstrap --variant=minbase "$SUITE" "$ROOT" "$MIRROR" >"$ROOT.debootstrap.log" 2>&1 ||
    fail "debootstrap failed; see $ROOT.debootstrap.log"
rm -f "$ROOT.debootstrap.log"

{
    echo "deb $MIRROR $SUITE main"
    echo "deb $MIRROR $SUITE-updates main"
    [ -n "$SECURITY" ] && echo "deb $SECURITY $SUITE-security main"
} >"$ROOT/etc/apt/sources.list"
cp /etc/resolv.conf "$ROOT/etc/resolv.conf"
# No services start inside the root.
printf '#!/bin/sh\nexit 101\n' >"$ROOT/usr/sbin/policy-rc.d"
chmod +x "$ROOT/usr/sbin/policy-rc.d"

for m in proc sys dev; do
    mount --bind "/$m" "$ROOT/$m"
    mounted="$m $mounted"
done

in_root() { chroot "$ROOT" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin \
    DEBIAN_FRONTEND=noninteractive LANG=C.UTF-8 sh -c "$1"; }

say "adding make, git, g++ and cmake"
in_root "apt-get update -qq && apt-get install -y -qq --no-install-recommends make git g++ cmake ca-certificates >/dev/null"

say "cloning $REPO at $(git -C "$REPO" rev-parse --short HEAD)"
git clone -q --no-local "$REPO" "$ROOT/root/zelvarine"

say "make demo"
in_root "cd /root/zelvarine && make demo" || fail "make demo failed on a fresh $SUITE"
say "make test"
in_root "cd /root/zelvarine && make test" || fail "make test failed on a fresh $SUITE"
say "passed: make demo and make test on a fresh $SUITE with make, git, g++ and cmake"
