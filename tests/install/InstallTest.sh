#!/usr/bin/env bash
# usage: InstallTest.sh CMAKE BUILD_DIR
#
# Installs into a temporary folder, moves the tree, and uses it as somebody would who has never seen
# the sources.
set -uo pipefail
cmake=$1
build=$2

work=$(mktemp -d)
xvfb=""
quib=""
finish()
{
    [ -z "$quib" ] || kill -KILL "$quib" 2>/dev/null
    [ -z "$xvfb" ] || { kill "$xvfb"; wait "$xvfb"; } 2>/dev/null
    rm -rf "$work"
}
trap finish EXIT

failures=0
# check TEXT COMMAND...
check()
{
    local text=$1
    shift
    if ! "$@" >/dev/null 2>&1; then
        echo "FAILED: $text"
        failures=$((failures + 1))
    fi
}
is() { [ "$1" = "$2" ]; }
# wait_for SECONDS COMMAND...: until it succeeds
wait_for()
{
    local end=$((SECONDS + $1))
    shift
    until "$@" 2>/dev/null; do
        [ $SECONDS -lt $end ] || return 1
        sleep 0.1
    done
}

DESTDIR=$work/stage "$cmake" --install "$build" --prefix /opt/quib >"$work/install.log" 2>&1 ||
    { cat "$work/install.log"; echo "FAILED: cmake --install"; exit 1; }
# The tree may be moved as a whole, and blanks in its path don't matter.
prefix="$work/some where"
mv "$work/stage/opt/quib" "$prefix"

for file in bin/quib bin/quib-run libexec/quib/quib; do
    check "$file is there and runs" test -x "$prefix/$file"
done
for file in share/quib/data/README.md share/quib/data/shaders/default/water.vert \
    share/quib/data/shaders/default/water.frag share/quib/scenes/welcome.qib share/quib/scenes/pyramid.qib \
    share/quib/scenes/rubble.qib share/quib/autoexec.cfg share/applications/quib.desktop \
    share/mime/packages/quib.xml share/doc/quib/README.md; do
    check "$file is there" test -e "$prefix/$file"
done
check "nothing of the developer's own runs is there" test ! -e "$prefix/share/quib/scenes/_ONEXITSAVE.qib"

# A file manager that looks into the tree knows what a scene is and what opens it.
mime=$(sed -n 's/^MimeType=\(.*\);$/\1/p' "$prefix/share/applications/quib.desktop")
check "the desktop entry names the type of scenes" \
    grep -q "type=\"$mime\"" "$prefix/share/mime/packages/quib.xml"
if command -v update-mime-database >/dev/null; then
    cp -r "$prefix/share/mime" "$work/mime"
    check "the type can be registered" update-mime-database "$work/mime"
    check "a scene is known by its extension" grep -q "^$mime:\*\.qib$" "$work/mime/globs"
fi
icon=$(sed -n 's/^Icon=//p' "$prefix/share/applications/quib.desktop")
check "the desktop entry's icon is there" \
    grep -q "<svg" "$prefix/share/icons/hicolor/scalable/apps/$icon.svg"
if command -v desktop-file-validate >/dev/null; then
    check "the desktop entry is valid" desktop-file-validate "$prefix/share/applications/quib.desktop"
fi

export HOME=$work/home
unset XDG_DATA_HOME DISPLAY
mkdir "$HOME"
cd "$work" || exit 1

# quib-run needs nothing but itself.
check "quib-run calculates" is "$("$prefix/bin/quib-run" -q -e '1 + 2' 2>&1 | tail -n 1)" 3
cp "$prefix/share/quib/scenes/welcome.qib" mine.qib
check "quib-run opens a scene beside the caller" \
    "$prefix/bin/quib-run" -q mine.qib --steps 10 --csv out.csv
check "quib-run has written its table" grep -q "^step,time,entityID,x,y,angle,vx,vy,omega" out.csv

# --version needs no display. The work directory's line comes first.
version=$("$prefix/bin/quib" --version 2>&1)
check "the version is the last line" is "$(tail -n 1 <<<"$version")" "Quib beta 4.0"
check "the work directory is the current one" is "$(head -n 1 <<<"$version")" "workdir =  "

home=$HOME/.local/share/quib
check "the user's folder has a link to the data" is "$(readlink "$home/data")" "$prefix/share/quib/data"
check "the data are there" test -e "$home/data/textures/mouse.png"
check "the window's icon is there" cmp "$home/Quib.bmp" "$prefix/share/quib/Quib.bmp"
for folder in scenes/quiblets screenshots; do
    check "the user's folder has $folder" test -d "$home/$folder"
done
check "the user has the scenes" cmp "$home/scenes/welcome.qib" "$prefix/share/quib/scenes/welcome.qib"
check "the user has an autoexec.cfg" test -e "$home/autoexec.cfg"

# So does a recording that can't be played: the file was meant from where the caller stands.
check "a recording is looked for there" is \
    "$("$prefix/bin/quib" --quit-after-replay --replay "no such" 2>&1 | tail -n 1)" \
    "quib: $work/no such: it can't be read"

# A picture is meant from there too.
check "a picture goes there" is \
    "$("$prefix/bin/quib" --after 1 --screenshot "a.qib" 2>&1 | tail -n 1)" \
    "quib: --screenshot needs a file, and \"$work/a.qib\" is a scene"
check "so is one after an equals sign" is \
    "$("$prefix/bin/quib" --after=1 --screenshot="a b.qib" c.qib 2>&1 | tail -n 1)" \
    "quib: --screenshot needs a file, and \"$work/a b.qib\" is a scene"

# What the user changed stays; a link to a tree that has moved is renewed.
echo "// mine" >"$home/autoexec.cfg"
ln -sfn /gone "$home/data"
"$prefix/bin/quib" --version >/dev/null 2>&1
check "a changed file stays" is "$(cat "$home/autoexec.cfg")" "// mine"
check "an old link is renewed" is "$(readlink "$home/data")" "$prefix/share/quib/data"

XDG_DATA_HOME=$work/xdg "$prefix/bin/quib" --version >/dev/null 2>&1
check "XDG_DATA_HOME is respected" test -L "$work/xdg/quib/data"

# Beside its data, without the starter: the program's folder is the work directory.
mkdir -p "$work/back\\slash/data" "$work/nowhere"
cp "$prefix/libexec/quib/quib" "$work/back\\slash/quib"
check "a program beside its data works there, with forward slashes" is \
    "$(cd "$work/nowhere" && "$work/back\\slash/quib" --version 2>&1 | head -n 1)" \
    "workdir =  $work/back/slash/"

if command -v Xvfb >/dev/null; then
    # A number of our own: a server that ends takes the socket of one along that has just chosen the
    # same. Without -noreset the server starts anew when its last client goes: SDL looks first whether
    # it can connect at all, and its second connection may meet a server that does not listen.
    Xvfb ":$((1000 + $$ % 50000))" -displayfd 3 -screen 0 800x600x24 -nolisten tcp -noreset 3>display >xvfb.log 2>&1 &
    xvfb=$!
    if wait_for 20 test -s display; then
        # Two arguments are one path with a blank, from where the caller stands.
        cp mine.qib "my own.qib"
        DISPLAY=:$(cat display) "$prefix/bin/quib" my --record "my session" own.qib >quib.log 2>&1 &
        quib=$!
        check "the window program comes up" wait_for 60 grep -q "Running program" quib.log
        check "it loads the caller's scene" grep -q "Loading argument $work/my own.qib" quib.log
        check "it lives" kill -0 "$quib"
        kill -TERM "$quib" 2>/dev/null
        status=0
        wait "$quib" || status=$?
        quib=""
        check "it ends in order, not with $status" is $status 0
        check "its recording lies where the caller stands" is "$(tail -n 1 "my session")" quit
        check "it leaves its configuration" test -s "$home/config.cfg"
        check "it leaves its scene" test -s "$home/scenes/_ONEXITSAVE.qib"
        check "it leaves its log" grep -q "Returning 0 from main" "$home/Logfile.txt"
        if [ $failures -gt 0 ]; then
            cat quib.log
        fi
    else
        check "Xvfb starts" false
        cat xvfb.log
    fi
else
    echo "Without Xvfb the window program is not tried."
fi

[ $failures = 0 ] && echo "The installed tree works."
exit $((failures > 0))
