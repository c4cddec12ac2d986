# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash
# A virtual display, and a program on it that is used by its keys. Sourced after lib.sh by scripts
# that set work, the folder for logs.

display=
display_pid=
program_pid=
window=

# shellcheck disable=SC2154
start_display() {
    local number
    # The server writes the number that it found free.
    Xvfb -displayfd 3 -nolisten tcp -screen 0 1280x900x24 \
        3>"$work/display" 2>"$work/display.log" 9>&- &
    display_pid=$!
    for _ in $(seq 100); do
        number=$(cat "$work/display")
        [ -z "$number" ] || break
        sleep 0.1
    done
    [ -n "$number" ] || fail "no virtual display"
    display=:$number
}

stop_program() {
    [ -n "$program_pid" ] || return 0
    kill "$program_pid" 2>/dev/null || :
    wait "$program_pid" 2>/dev/null || :
    program_pid=
}

stop_display() { [ -z "$display_pid" ] || kill "$display_pid" 2>/dev/null || :; }

on_display() { env DISPLAY="$display" LC_ALL=C.UTF-8 timeout 10 xdotool "$@"; }

# wait_for_window <start of its title>: up to a minute.
wait_for_window() {
    for _ in $(seq 600); do
        if window=$(on_display search --onlyvisible --name "^$1" 2>/dev/null); then
            printf 'window: %s\n' "$(on_display getwindowname "$window")"
            return
        fi
        kill -0 "$program_pid" 2>/dev/null || break
        sleep 0.1
    done
    cat "$work/program.log" >&2
    fail "the window \"$1\" did not come"
}

# press <key>: in the window that came last. No window manager gives it the focus.
press() {
    sleep 0.5
    on_display windowfocus --sync "$window" || :
    on_display key "$1"
}

# wait_for_end: the program has half a minute, and must end with 0.
wait_for_end() {
    for _ in $(seq 300); do
        kill -0 "$program_pid" 2>/dev/null || break
        sleep 0.1
    done
    ! kill -0 "$program_pid" 2>/dev/null || fail "the program does not end"
    wait "$program_pid" || fail "the program ended with $?"
    program_pid=
}
