#!/usr/bin/env bash
# usage: tools/scene_pictures.sh FOLDER [QUIB]
#
# Makes pictures of all scenes in the folder: NAME.png as the window shows it after some seconds, and how
# the same looks in other ways: NAME-plain.png without shaders, NAME-simple.png with simpleWater,
# NAME-far.png and NAME-near.png at the ends of the zoom, 1.5 and 3000 pixels to a unit. QUIB is build/quib
# by default. Without a display it runs in a virtual one, Xvfb (tools/install_packages xvfb).
set -euo pipefail
root=$(dirname "$(dirname "$(readlink -f "$0")")")
[ $# -ge 1 ] || { sed -n 2,7p "$0" >&2; exit 2; }
mkdir -p "$1"
pictures=$(readlink -f "$1")
quib=$(readlink -f "${2:-$root/build/quib}")
[ -x "$quib" ] || { echo "$quib is not there: build it first" >&2; exit 2; }

work=$(mktemp -d)
xvfb=""
finish()
{
    [ -z "$xvfb" ] || kill "$xvfb" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
if [ -z "${DISPLAY:-}" ]; then
    Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp -noreset 3>"$work/display" 2>/dev/null &
    xvfb=$!
    until [ -s "$work/display" ]; do sleep 0.1; done
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
fi
ln -s "$root/data" "$work/data"
cd "$work"

# shot NAME SCENE SECONDS SETTINGS MORE: the settings are there before the scene, the rest comes after it
shot()
{
    echo "$4" >autoexec.cfg
    { cat "$root/scenes/$2.qib"; echo ";$5"; } >scene.qib
    "$quib" --screenshot "$pictures/$1.png" --after "$3" scene.qib >said 2>&1 || { cat said >&2; exit 1; }
    grep -E '^(!!|--)' said >&2 || true
    echo "$1"
}

# When each scene is at its best, and where there is something to be seen from near.
while read -r scene seconds near; do
    shot "$scene" "$scene" "$seconds" "" ""
    shot "$scene-plain" "$scene" "$seconds" "Resources.shaders = false" ""
    shot "$scene-simple" "$scene" "$seconds" "App.simpleWater = true" ""
    shot "$scene-far" "$scene" "$seconds" "" "Scene.Camera.zoom = 1.5;"
    shot "$scene-near" "$scene" 0 "" "Scene.Camera.zoom = 3000.0; Scene.Camera.pan = $near;"
done <<'END'
welcome 4 [-7.16, 5.68]
pyramid 2 [0.05, 1.0]
rubble 6 [-3.6, 1.95]
bridge 6 [-5.0, 0.15]
car 4 [-15.8, -2.2]
mill 8 [-3.85, 5.0]
cradle 3 [-1.0, 1.05]
catapult 5 [-3.9, 0.53]
dam 2 [-4.2, 6.0]
END

for file in "$root"/scenes/*.qib; do
    name=$(basename "$file" .qib)
    [ -e "$pictures/$name.png" ] || { echo "scenes/$name.qib is missing in the list above" >&2; exit 1; }
done
