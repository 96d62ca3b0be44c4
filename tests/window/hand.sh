# shellcheck shell=bash disable=SC2154  # who sources it sets quib
# To be sourced by bash: a user's hand, by xdotool, at a Quib in an X server of its own.
#
#   quib=build/quib; source tests/window/hand.sh
#   begin 1000 700                 # a work directory and an X server for a window of this size
#   start [SCENE]                  # Quib, as sync needs it
#   tap x; drag 1 $(straight -1 0 1 1); save; finish...
#
# Points are in the world, as the view of look has it; until that is called, as a new scene has it. Every
# wait is for something that happens, at most for 60 seconds. What fails ends the script with a text and
# with what Quib said last.

work=$(mktemp -d)
dir=$work/dir # Quib's work directory
xvfb_pid="" quib_pid=""
sync_number=0
view_x=0 view_y=0 view_zoom=100
pause=0       # seconds between two moves of the mouse

clean_up()
{
    [ -z "$quib_pid" ] || kill -KILL "$quib_pid" 2>/dev/null
    [ -z "$xvfb_pid" ] || kill "$xvfb_pid" 2>/dev/null
    rm -rf "$work"
}
trap clean_up EXIT

fail()
{
    echo "FAILED: $1" >&2
    kill -0 "$xvfb_pid" 2>/dev/null || { echo "The X server on ${DISPLAY:-} has ended:" >&2; tail -n 3 "$work/xvfb" >&2; }
    [ ! -s "$work/err" ] || { echo "The last that Quib said:" >&2; grep -v handSync "$work/err" | tail -n 15 >&2; }
    exit 1
}

# wait_for TEXT COMMAND...: until it succeeds
wait_for()
{
    local text=$1 end=$((SECONDS + 60))
    shift
    until "$@" 2>/dev/null; do
        [ $SECONDS -lt $end ] || fail "$text"
        sleep 0.01
    done
}

has_line() { [ "$(wc -l <"$1")" -gt 0 ]; } # FILE

begin() # WIDTH HEIGHT
{
    local program
    for program in Xvfb xdotool; do
        command -v "$program" >/dev/null || { echo "$program is missing: tools/install_packages test" >&2; exit 1; }
    done
    width=$1 height=$2
    # A number of our own: a server that ends takes the socket of one along that has just chosen the same.
    # It must not begin anew when a Quib has ended, while the next one looks for it.
    Xvfb ":$((1000 + $$ % 50000))" -displayfd 3 -screen 0 "${width}x${height}x24" -nolisten tcp -accessx -noreset 3>"$work/display" >"$work/xvfb" 2>&1 &
    xvfb_pid=$!
    wait_for "Xvfb did not start" has_line "$work/display"
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
    mkdir -p "$dir/scenes"
    ln -s "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/../../data" "$dir/data"
    local i=1 letter
    for letter in A B C; do
        echo "Keys.bind(\"f$((i++))\", { handSync$letter });" >>"$dir/autoexec.cfg"
    done
    echo "App.autosaveTime = 1.0e9;" >>"$dir/autoexec.cfg"
    # Without a scene the first start would show the welcome scene of the data.
    echo "FileInfo.version = 2; Scene.Camera.pan = [0.0, 0.0]; Scene.Camera.zoom = 100.0" \
        >"$dir/scenes/welcome.qib"
}

start() # [ARGUMENTS]
{
    # At this very size, and for its user the first start: no exit scene.
    echo "System.resolution = [$width, $height]" >"$dir/config.cfg"
    rm -f "$dir/scenes/_ONEXITSAVE.qib"
    : >"$work/out"
    : >"$work/err"
    (cd "$dir" && exec env -u SDL_VIDEODRIVER ASAN_OPTIONS=detect_leaks=0 "$quib" "$@") >"$work/out" 2>"$work/err" &
    quib_pid=$!
    wait_for "Quib did not start" grep -q "Running program..." "$work/out"
    wait_for "there is no window" xdotool search --onlyvisible --name Quib >"$work/window"
    xdotool windowfocus "$(head -n 1 "$work/window")"
    sync
}

# Ends it as the window's close box does. It must have had nothing to complain about.
stop()
{
    kill -TERM "$quib_pid"
    wait "$quib_pid" || fail "Quib ended with $?"
    quib_pid=""
    ! grep -h "Exception caught\|Tool failed\|runtime error\|Sanitizer" "$work/err" "$work/out" >&2 ||
        fail "Quib has complained"
}

is_running() { kill -0 "$quib_pid" 2>/dev/null; }
more_lines() # COUNT FILE TEXT
{
    is_running || fail "Quib has ended"
    [ "$(grep -c "$3" "$2")" -gt "$1" ]
}

# Waits until Quib has seen all that was done.
sync()
{
    local letters=ABC before
    local letter=${letters:sync_number%3:1} key=F$((sync_number % 3 + 1))
    before=$(grep -c "handSync$letter not found in scope" "$work/err")
    sync_number=$((sync_number + 1))
    xdotool key --delay 0 "$key"
    wait_for "Quib sees no events any more" more_lines "$before" "$work/err" "handSync$letter not found in scope"
}

look() # X Y ZOOM
{
    view_x=$1 view_y=$2 view_zoom=$3
}

# Points, as "x y x y".
straight() # X Y X Y [STEPS]
{
    awk -v ax="$1" -v ay="$2" -v bx="$3" -v by="$4" -v n="${5:-20}" \
        'BEGIN { for (i = 0; i <= n; ++i) printf "%.4f %.4f ", ax + (bx - ax) * i / n, ay + (by - ay) * i / n }'
}
round() # X Y RADIUS [STEPS]
{
    awk -v x="$1" -v y="$2" -v r="$3" -v n="${4:-30}" \
        'BEGIN { for (i = 0; i <= n; ++i) printf "%.4f %.4f ", x + r * cos(6.283185 * i / n), y + r * sin(6.283185 * i / n) }'
}

# The words that make xdotool go there.
to_moves() # POINTS
{
    echo "$@" | awk -v vx="$view_x" -v vy="$view_y" -v z="$view_zoom" -v w="$width" -v h="$height" -v p="$pause" \
        '{ for (i = 1; i < NF; i += 2) {
             printf "mousemove %d %d ", w / 2 + ($i - vx) * z + 0.5, h / 2 - ($(i + 1) - vy) * z + 0.5
             if (p > 0) printf "sleep %s ", p } }'
}

# shellcheck disable=SC2046  # words are what it is about
move() { xdotool $(to_moves "$@"); }
# shellcheck disable=SC2046
press() # BUTTON X Y POINTS...
{
    local button=$1 x=$2 y=$3
    shift 3
    xdotool $(to_moves "$x" "$y") mousedown "$button" $(to_moves "$@")
}
release() { xdotool mouseup "$1"; } # BUTTON
drag()                              # BUTTON X Y POINTS...
{
    press "$@"
    release "$1"
}
click() # X Y [BUTTON]
{
    # shellcheck disable=SC2046
    xdotool $(to_moves "$1" "$2") click "${3:-1}"
}
tap() { xdotool key --delay 0 "$@"; }
hold() { xdotool keydown "$1"; }
let_go() { xdotool keyup "$1"; }

# Ctrl S. The scene is $dir/$scene then.
scene=""
save()
{
    local before
    before=$(grep -c "Scene saved to " "$work/out")
    tap ctrl+s
    wait_for "Quib does not save" more_lines "$before" "$work/out" "Scene saved to "
    scene=$(sed -n 's/^Scene saved to //p' "$work/out" | tail -n 1)
}
count() # KIND: how many of them the saved scene has
{
    grep -c "Scene.add$1(" "$dir/$scene"
}

# What the window shows, as a PNG.
picture() # FILE
{
    local shot before
    sync
    rm -rf "$dir/screenshots"
    before=$(grep -c "Screenshot saved to" "$work/out")
    kill -USR1 "$quib_pid"
    wait_for "no screenshot" more_lines "$before" "$work/out" "Screenshot saved to"
    shot=$(compgen -G "$dir/screenshots/*.tga" | head -n 1)
    python3 "$(dirname "${BASH_SOURCE[0]}")/tga_to_png.py" "$shot" "$1" || fail "$1 could not be made"
}
