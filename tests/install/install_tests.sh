#!/usr/bin/env bash
# install_tests.sh BUILD PACKAGE CORPUS: installs BUILD into a scratch prefix and checks what a
# game author finds there; then, when cpack and dpkg-deb are here, builds the Debian package
# once and checks the same in its unpacked files.
set -u
build=$1 package=$2 corpus=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAILED: $*"; failures=$((failures + 1)); }

# The files and programs under ROOT/PREFIX-like folder $1.
check_tree() {
  local root=$1 what=$2
  for program in engine fbxinfo fbxview newgame; do
    [ -x "$root/bin/$program" ] || fail "$what: bin/$program missing"
  done
  for program in fbxgen demogen; do
    [ ! -e "$root/bin/$program" ] || fail "$what: bin/$program installed"
  done
  for file in doc/$package/README.md doc/$package/game-authoring.md \
              $package/demo/Assets/states.xml $package/demo/Assets/stage.xml \
              $package/demo/Assets/models/character.fbx $package/demo/Assets/textures/face.png; do
    [ -f "$root/share/$file" ] || fail "$what: share/$file missing"
  done
  for program in fbxinfo fbxview newgame; do
    "$root/bin/$program" --help >/dev/null 2>&1 || fail "$what: $program --help"
    "$root/bin/$program" --version | grep -q "^$program [0-9]" || fail "$what: $program --version"
  done
  # The installed newgame writes a game from two corpus models.
  local game="$scratch/game-$what"
  if "$root/bin/newgame" "$game" "$corpus/maya_cube_7500_binary.fbx" \
       "$corpus/maya_transform_animation_7500_binary.fbx" >/dev/null; then
    for file in README.txt Assets/states.xml Assets/loading.xml \
                Assets/models/maya_cube_7500_binary.fbx \
                Assets/models/maya_transform_animation_7500_binary.fbx; do
      [ -f "$game/$file" ] || fail "$what: newgame wrote no $file"
    done
    grep -q "<model_look>authored</model_look>" "$game/Assets/states.xml" ||
      fail "$what: newgame's state table is not in the authored look"
  else
    fail "$what: newgame"
  fi
}

cmake --install "$build" --prefix "$scratch/prefix" >/dev/null || fail "cmake --install"
check_tree "$scratch/prefix" installed

if command -v cpack >/dev/null && command -v dpkg-deb >/dev/null; then
  if (cd "$scratch" && cpack --config "$build/CPackConfig.cmake" -B "$scratch/package" \
        >cpack.log 2>&1); then
    deb=$(ls "$scratch"/package/*.deb 2>/dev/null | head -n 1)
    if [ -n "$deb" ]; then
      dpkg-deb -f "$deb" Package | grep -qx "$package" || fail "package name"
      dpkg-deb -f "$deb" Depends | grep -q "libc6" || fail "package depends on no libraries"
      dpkg-deb -x "$deb" "$scratch/root" || fail "dpkg-deb -x"
      check_tree "$scratch/root/usr" package
    else
      fail "cpack wrote no .deb"
    fi
  else
    cat "$scratch/cpack.log"
    fail "cpack"
  fi
else
  echo "cpack or dpkg-deb missing: the package is not checked"
fi

[ "$failures" -eq 0 ] && echo "install checks passed"
exit $((failures > 0))
