#!/usr/bin/env bash
# usage: tools/tool_pictures.sh FOLDER [QUIB]
#
# Makes a PNG of each tool in the middle of its use, as the window shows it, in the folder. QUIB is
# build/quib by default. Needs xdotool and Xvfb (tools/install_packages test).
set -uo pipefail
root=$(dirname "$(dirname "$(readlink -f "$0")")")
[ $# -ge 1 ] || { sed -n 2,5p "$0" >&2; exit 2; }
mkdir -p "$1"
pictures=$(readlink -f "$1")
quib=$(readlink -f "${2:-$root/build/quib}")
[ -x "$quib" ] || { echo "$quib is not there: build it first" >&2; exit 2; }
source "$root/tests/window/hand.sh"

# A body and a wheel beside each other, a beam over both, and the ground.
stage="FileInfo.version = 2; Sim.running = false; Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0;
Scene.addPlane({ geomID = 9; entityID = 9; angle = 1.5707963; pos = [0.0, -1.5]; color = [0.5450981, 0.4196078, 0.2901961, 1.0] });
Scene.addBox({ geomID = 1; entityID = 1; pos = [-1.2, -1.0]; size = [1.4, 1.0]; color = [0.9411765, 0.627451, 0.2352941, 1.0] });
Scene.addCircle({ geomID = 2; entityID = 2; pos = [1.2, -0.9]; radius = 0.6; color = [0.1803922, 0.5254902, 0.6705882, 1.0] });
Scene.addBox({ geomID = 3; entityID = 3; pos = [0.0, -0.3]; size = [3.4, 0.3]; color = [0.4, 0.65, 0.3, 1.0] });"

# shot NAME COMMANDS: on a fresh stage; what is held is let go afterwards
shot()
{
    local name=$1
    shift
    tap Escape Delete k F4
    sync
    "$@"
    picture "$pictures/$name.png"
    xdotool keyup shift keyup ctrl keyup alt mouseup 1 mouseup 3
    tap Escape
    let_go d
    echo "$name"
}

# shellcheck disable=SC2046  # points are words
{
    sketch_closed() { press 1 $(round 0 1 0.8 30); }
    sketch_line() { drag 1 $(straight -1.5 1.4 1.5 0.8); press 1 $(straight -1 0.6 1 1.6); }
    sketch_shift() { press 1 $(straight -2 0.5 -1 1); hold shift; move 2 1.5; }
    lasso() { press 1 $(round -1.2 -0.85 1.1 30); }
    selected() { drag 1 $(round -1.2 -0.85 1.1 30) -0.1 -0.85; move 2.5 2; }
    brush() { tap b; press 1 $(round 0 1 0.8 24); }
    box() { tap x; press 1 $(straight -2 0.5 1 1.8); }
    square() { tap x; hold shift; press 1 $(straight -2 0.5 -0.5 0.9); }
    circle() { tap c; press 1 $(straight 0 1 0.6 1.4); }
    plane() { tap p; press 1 $(straight -3 -0.9 -2.8 -0.1); }
    chain() { tap n; press 1 $(straight -2.2 0.3 -0.5 1.5 40) $(straight -0.5 1.5 1.5 0.3 40); }
    spring() { tap s; press 1 $(straight -1.2 -1 1.2 1.2); }
    hinge() { tap h; click -1.4 -0.3; move 2.5 2; }
    fixjoint() { tap f; click 1.2 -0.35; move 2.5 2; }
    pen() { tap e; click 1.5 -1; tap d; tap space; press 1 $(straight 1.2 -0.9 1.8 1); sleep 1; }
    pick() { click -1.2 -1; }
    move_tool() { pick; press 1 $(straight -1.2 -1 0.4 1); }
    clone_tool() { pick; hold ctrl; press 1 $(straight -1.2 -1 0.4 1); }
    rotate_tool() { press 3 $(straight -0.7 -1.0 -0.75 -0.65 6) $(straight -0.75 -0.65 -1 0.2); }
    scale_idle() { pick; tap r; move -1.2 -1; }
    scale_hover() { pick; tap r; move -0.5 -0.5; }
    scale_tool() { pick; tap r; press 1 $(straight -0.5 -0.5 0.6 0.8); }
    # Against the ground, so that there is something to hold it back.
    drag_tool() { tap space; tap d; press 1 $(straight -1.2 -0.8 -1.6 -2.6); sleep 0.3; }
    drag_turn() { tap space; tap d; press 1 $(straight -1.5 -0.7 -1.8 1.4); sleep 1; xdotool mousedown 3; move -1.0 0.9; sleep 0.5; }
    pan_tool() { press 3 $(straight 2.5 2 1.5 1.2); }
    menu() { click -1.2 -1 3; }

    begin 800 600
    echo "Keys.bind(\"f4\", { Scene.Clear; $stage });" | tr '\n' ' ' >>"$dir/autoexec.cfg"
    start
    for name in sketch_closed sketch_line sketch_shift lasso selected brush box square circle plane chain spring \
        hinge fixjoint pen move_tool clone_tool rotate_tool scale_idle scale_hover scale_tool drag_tool drag_turn \
        pan_tool menu; do
        shot "$name" "$name"
    done
}
stop
