#!/usr/bin/env bash
# usage: tests/window/play_session.sh [--quib PROGRAM] [--full | --seconds N] [--seed N] [--keep FOLDER]
#
# Plays with Quib as a user does, with real X events: draws a slope and a car (a body, two wheels, two
# hinges), undoes all and does it all again, lets it run, drags it about, undoes and does all again, saves,
# and opens what was saved in another Quib: that must be the same scene text. One round of it by default;
# --full goes on for five minutes, with a hand that is as slow as a user's and a car of another shape
# each time. --keep leaves the scenes there.
set -uo pipefail

here=$(dirname "$(readlink -f "$0")")
quib=$here/../../build/quib seconds=0 seed=1 keep=""
while [ $# -gt 0 ]; do
    case $1 in
    --full) seconds=300 ;;
    --seconds) seconds=$2 && shift ;;
    --quib) quib=$(readlink -f "$2") && shift ;;
    --seed) seed=$2 && shift ;;
    --keep) keep=$2 && shift ;;
    *) echo "unknown: $1" >&2 && exit 2 ;;
    esac
    shift
done
[ -x "$quib" ] || { echo "$quib is not there: build it first" >&2; exit 2; }

source "$here/hand.sh"
RANDOM=$seed
[ "$seconds" = 0 ] || pause=0.01

# within A B: a number between these, in hundredths
within() { awk -v a="$1" -v b="$2" -v r=$((RANDOM % 1001)) 'BEGIN { printf "%.2f", a + (b - a) * r / 1000 }'; }
add() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.3f", a + b }'; }

expect() # TEXT FOUND EXPECTED
{
    [ "$2" = "$3" ] || fail "round $round: $1: $2 instead of $3"
}
expect_same() # TEXT FILE FILE
{
    cmp -s "$2" "$3" || { diff "$2" "$3" | head -n 20 >&2; fail "round $round: $1"; }
}
expect_parts() # TEXT PLANES POLYGONS CIRCLES HINGES
{
    expect "$1, slopes" "$(count Plane)" "$2"
    expect "$1, bodies" "$(count Polygon)" "$3"
    expect "$1, wheels" "$(count Circle)" "$4"
    expect "$1, hinges" "$(count Hinge)" "$5"
}

# The slope, the body, and a circle, a move and a hinge for each wheel.
drawn_steps=8
# A key that is down again within two milliseconds passes for one that is held.
undo() { xdotool keydown ctrl key --delay 8 --repeat "$1" z keyup ctrl; } # STEPS
redo() { xdotool keydown ctrl key --delay 8 --repeat "$1" y keyup ctrl; }

draw_slope()
{
    # The plane tool: from a point of the slope along its normal.
    tap p
    # shellcheck disable=SC2046
    drag 1 $(straight 0 -2.4 "$(within 0.05 0.3)" -1.4)
    tap k
}

draw_car()
{
    local length radius x
    length=$(within 1.3 1.7) # half of it
    radius=$(within 0.35 0.5)
    # The body, as a closed stroke with the left end at -2 and rounded by nobody.
    # shellcheck disable=SC2046
    drag 1 $(straight -3 0.6 "$(add -3 "$length")" 0.6) $(straight "$(add -3 "$length")" 0.6 "$(add -3 "$length")" 1.2 8) \
        $(straight "$(add -3 "$length")" 1.2 -3 1.2) $(straight -3 1.2 -3 0.62 8)
    # The wheels, drawn to the right and brought to their places.
    for x in -2.8 "$(add -3.2 "$length")"; do
        tap c
        # shellcheck disable=SC2046
        drag 1 $(straight 2 1 "$(add 2 "$radius")" 1)
        tap k
        click 2 1
        # shellcheck disable=SC2046
        drag 1 $(straight 2 1 "$x" 0.65)
        # A small round stroke is a hinge, but on what is selected it is a move.
        click 3.5 2
        # shellcheck disable=SC2046
        drag 1 $(round "$x" 0.68 0.1 14)
    done
}

play_round()
{
    # Everything away, if there is anything.
    tap Escape ctrl+a Delete
    save
    expect_parts "cleared" 0 0 0 0

    draw_slope
    save
    expect_parts "after the slope" 1 0 0 0
    draw_car
    save
    expect_parts "drawn" 1 1 2 2
    cp "$dir/$scene" "$work/drawn.qib"

    undo $drawn_steps
    save
    expect_parts "undone" 0 0 0 0
    redo $drawn_steps
    save
    expect_parts "done again" 1 1 2 2
    expect_same "doing all again gives another scene" "$work/drawn.qib" "$dir/$scene"

    # It runs; and the hand pulls at the body, up and to the left, and lets it fall.
    tap space
    sleep 1 # of the world's time
    tap d
    # shellcheck disable=SC2046
    press 1 $(straight -2.3 0.9 -1 2)
    sleep 0.5
    # shellcheck disable=SC2046
    move $(straight -1 2 -2 1.5)
    sleep 0.5
    release 1
    tap k
    sleep 0.5
    tap space
    save
    expect_parts "played" 1 1 2 2
    cp "$dir/$scene" "$work/played.qib"
    cmp -s "$work/drawn.qib" "$work/played.qib" && fail "round $round: nothing has moved"

    # One undo is the reset.
    tap ctrl+z
    save
    expect_same "the reset is not what was drawn" "$work/drawn.qib" "$dir/$scene"
    undo $drawn_steps
    save
    expect_parts "all undone" 0 0 0 0
    redo $((drawn_steps + 1))
    tap space # the last redo has set it running
    save
    expect_parts "all done again" 1 1 2 2
    cp "$dir/$scene" "$work/saved.qib"
    stop

    # Another Quib opens it; a scene that is opened runs, and one undo is its start.
    start "$scene"
    wait_for "the scene was not loaded" grep -q "Loaded scene $scene" "$work/out"
    tap ctrl+z
    save
    expect_same "the opened scene is another" "$work/saved.qib" "$dir/$scene"
}

begin 1000 700
start
tap space # what is loaded runs
round=0
until [ "$round" != 0 ] && [ $SECONDS -ge "$seconds" ]; do
    round=$((round + 1))
    play_round
    echo "round $round after $SECONDS s"
done
stop
[ -z "$keep" ] || { mkdir -p "$keep" && cp "$work"/*.qib "$keep"; }
echo "All is well."
