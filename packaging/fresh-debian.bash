# A fresh Debian for the script that includes this, in the folder $root. It needs root, for the
# other root directory; debootstrap; and the archives that this machine's apt is set up for. However
# the script ends, nothing is left: neither the folder $work, where $root is, nor the processes in
# $pids.

if [[ -z ${QUELVO_NAMESPACE-} ]]; then
    # In a namespace of its own the mounts end with the script, however it ends.
    QUELVO_NAMESPACE=1 exec unshare --mount --propagation private -- "$0" "$@"
fi

work=$(mktemp -d "${TMPDIR:-/var/tmp}/quelvo-debian.XXXXXX")
root=$work/root
pids=()

clean_up() {
    ((${#pids[@]} == 0)) || kill "${pids[@]}" 2>/dev/null || true
    wait
    local place
    for place in tmp sys dev proc; do
        ! mountpoint -q "$root/$place" || umount -l "$root/$place"
    done
    if grep -qF " $root/" /proc/self/mountinfo; then
        echo "Left alone, for something is mounted there: $root" >&2
    else
        rm -rf --one-file-system "$work"
    fi
}
trap clean_up EXIT

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

inside() { env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin TERM=dumb chroot "$root" "$@"; }

# The same, as somebody with no rights and a home of their own. It takes the shell's place.
person() {
    exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/home/person TERM=dumb LC_ALL=C.UTF-8 \
        ${DISPLAY+DISPLAY="$DISPLAY"} chroot --userspec=person "$root" "$@"
}

apt_inside() {
    inside env DEBIAN_FRONTEND=noninteractive apt-get -qq -y "$@" >>"$work/log" 2>&1 || {
        tail -n 40 "$work/log" >&2
        fail "apt-get $*"
    }
}

# Makes a fresh Debian of a release.
make_root() {
    local release=$1 sources
    sources=$("${BASH_SOURCE[0]%/*}/archives" "$release")
    debootstrap --variant=minbase "$release" "$root" \
        "$(awk -v release="$release" '$3 == release { print $2; exit }' <<<"$sources")" \
        >"$work/log" 2>&1 || {
        tail -n 40 "$work/log" >&2
        fail "debootstrap $release"
    }
    echo "$sources" >"$root/etc/apt/sources.list"
    echo force-unsafe-io >"$root/etc/dpkg/dpkg.cfg.d/fresh-debian"  # it need not outlive a crash
    # How this machine reaches the archives.
    local file
    for file in /etc/apt/apt.conf.d/99* /etc/hosts /etc/resolv.conf; do
        [[ ! -e $file ]] || cp --dereference "$file" "$root$file"
    done
    printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"  # no services
    chmod +x "$root/usr/sbin/policy-rc.d"
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    mount -t sysfs sys "$root/sys"
    mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
    inside useradd --create-home person
    apt_inside update
}
