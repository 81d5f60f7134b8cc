# make-wine-root.sh SUITE FOLDER MIRROR, as root: an i386 Debian with Wine, ready to run.
set -eu
suite=$1 root=$2 mirror=$3

# In a mount namespace of its own nothing stays mounted when this ends half-way.
unshare --mount debootstrap --arch=i386 --variant=minbase --include=ca-certificates \
  "$suite" "$root" "$mirror"
chroot "$root" env DEBIAN_FRONTEND=noninteractive \
  apt-get -q -y --no-install-recommends install wine wine32
chroot "$root" apt-get clean
rm -rf "$root"/var/lib/apt/lists/* "$root"/usr/share/doc/* "$root"/usr/share/man/*

IMSDK_WINE_ROOT=$root WINEDLLOVERRIDES='mscoree,mshtml=' \
  sh scripts/dev/wine-place.sh /nonexistent \
  sh -c 'scripts/dev/wine-run.sh wineboot --init && chroot "$IMSDK_WINE_ROOT" env HOME=/root wineserver --wait'
