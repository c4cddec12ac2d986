# SPDX-License-Identifier: GPL-3.0-or-later
# shellcheck shell=bash disable=SC2034,SC2154
# The trials of script/package-windows under Wine: tests, installer and program, on a display. Sourced
# after display.sh by the script, which sets work, kept, tree, installer, tests and pictures.

# Documents lie in a folder with letters of several kinds. Where no window manager is, Wine draws the
# frames of windows, if it is told to.
settings_of_wine() {
    sed 's/$/\r/' <<'TEXT'
Windows Registry Editor Version 5.00

[HKEY_CURRENT_USER\Software\Microsoft\Windows\CurrentVersion\Explorer\User Shell Folders]
"Personal"="C:\\Žluťoučký kůň\\患者"

[HKEY_CURRENT_USER\Software\Wine\X11 Driver]
"Managed"="N"

[HKEY_CURRENT_USER\Software\Wine\Fonts\Replacements]
"MS Shell Dlg 2"="DejaVu Sans"
"Segoe UI"="DejaVu Sans"
TEXT
}

start_wine() {
    export HOME=$work/home WINEPREFIX=$work/wine WINEARCH=win64 WINEDEBUG=-all
    # Nothing of what it would fetch is needed.
    export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
    export DISPLAY=$display LC_ALL=C.UTF-8
    mkdir -p "$HOME"
    say "starting Wine"
    logged wineboot -i
    disk=$WINEPREFIX/drive_c
    documents="$disk/Žluťoučký kůň/患者"
    mkdir -p "$documents"
    settings_of_wine | iconv -t UTF-16 >"$work/settings.reg"
    logged wine regedit "$work/settings.reg"
    # The pictures on buttons of frames, which Debian's Wine does not find.
    cp /usr/share/wine/fonts/marlett.ttf "$disk/windows/Fonts/"
    wineserver -k
}

run_tests() {
    say "testing"
    ctest --preset windows -j "$(nproc)" >"$work/tests.log" 2>&1 </dev/null || {
        tail -n 20 "$work/tests.log" >&2
        grep -A 3 -aE '^(FAIL|QFATAL)' "$kept"/program/tests/tst_*.txt >&2 || :
        fail "these tests fail under Wine"
    }
    say "${#tests[@]} test programs pass under Wine: ${tests[*]}"
}

# type_name <start of a title> <name>: into the file dialog that comes.
type_name() {
    wait_for_window "$1"
    sleep 1
    on_display windowfocus --sync "$window" || :
    on_display type --delay 40 "$2"
    on_display key Return
}

# wait_for_file <path>: and until the dialog has given the keyboard back.
wait_for_file() {
    for _ in $(seq 300); do
        if [ -s "$1" ]; then
            sleep 2
            return
        fi
        sleep 0.1
    done
    fail "$1 was not saved"
}

# click <from the right edge> <from the bottom or, negative, from the middle>
click() {
    local WIDTH=0 HEIGHT=0 y
    eval "$(on_display getwindowgeometry --shell "$window" | grep -E '^(WIDTH|HEIGHT)=')"
    y=$((HEIGHT - $2))
    [ "$2" -ge 0 ] || y=$((HEIGHT / 2 - $2))
    on_display mousemove --window "$window" $((WIDTH - $1)) "$y" click 1
    sleep 0.5
}

# photograph <name> [<option of scrot>...]: the display, where pictures are wanted.
photograph() {
    [ -n "$pictures" ] || return 0
    sleep 2
    mkdir -p "$pictures"
    env DISPLAY="$display" scrot --overwrite "${@:2}" "$pictures/$1.png"
}

photograph_window() {
    local X=0 Y=0 WIDTH=0 HEIGHT=0
    eval "$(on_display getwindowgeometry --shell "$window" | grep -E '^(X|Y|WIDTH|HEIGHT)=')"
    photograph "$1" --autoselect "$X,$Y,$WIDTH,$HEIGHT"
}

# photograph_maximised <name>: by the menu that each window has on Windows.
photograph_maximised() {
    [ -n "$pictures" ] || return 0
    press alt+space
    press x
    photograph "$1"
}

# use_program <folder>: from the first message to the end; the program runs in this folder, which
# holds a sample.
use_program() {
    wait_for_window 'Wrong Config'
    photograph_window first-start-windows
    press Return
    wait_for_window Glymark
    press ctrl+o
    type_name 'Open file' glymark-sample.xlsx
    sleep 2
    wait_for_window Glymark
    press ctrl+s
    type_name 'Save file' data.xlsx
    wait_for_file "$1/data.xlsx"
    wait_for_window Glymark
    press ctrl+d
    type_name 'Save analysis' analysis.xlsx
    wait_for_file "$1/analysis.xlsx"
    wait_for_window Glymark
    # The first six patients in the table on the right, then the left button below it.
    click 140 -60
    press ctrl+Home
    for _ in 1 2 3 4 5; do
        press shift+Down
    done
    click 205 24
    wait_for_window 'Graph name'
    press Return
    sleep 1
    wait_for_window Glymark
    press ctrl+p
    type_name 'Save SVG' page.svg
    wait_for_window 'Graphs export'
    press Return
    wait_for_file "$1/page.svg"
    wait_for_window Glymark
    photograph_maximised window-windows
    press ctrl+q
    wait_for_end
}

# In the background, on a display of its own, while tests run under Wine.
try_native() {
    local work=$native
    trap 'stop_program; stop_display' EXIT
    start_display
    (cd "$native" && exec env DISPLAY="$display" "$OLDPWD/build/release/src/glymark") \
        >"$work/program.log" 2>&1 </dev/null 9>&- &
    program_pid=$!
    pictures='' use_program "$native"
}

start_native_trial() {
    native=$work/native
    mkdir -p "$native"
    cp samples/glymark-sample.xlsx "$native/"
    try_native >"$work/native.log" 2>&1 &
    native_trial=$!
}

end_native_trial() {
    wait "$native_trial" || {
        cat "$work/native.log" >&2
        fail "the same could not be done on this system"
    }
    say "the same is done on this system"
}

# remove_program: with the uninstaller, which must leave nothing of its own.
remove_program() {
    wine "$program/uninstall.exe" /S >"$work/uninstall.log" 2>&1 </dev/null
    # It goes on in a copy of itself.
    wineserver -w
    [ ! -e "$program" ] || fail "$program is still there: $(ls -A "$program")"
    [ ! -e "$menu/Glymark" ] || fail "the shortcuts are still there"
    ! grep -aiq 'Uninstall.*Glymark\|Software.*Glymark' "$WINEPREFIX/user.reg" ||
        fail "the registry still knows Glymark"
}

# A second installation, under a Czech Windows.
try_czech() {
    local locales=$work/locales
    mkdir -p "$locales"
    localedef -i cs_CZ -f UTF-8 "$locales/cs_CZ.UTF-8"
    say "installing silently where Windows speaks Czech"
    env LOCPATH="$locales" LC_ALL=cs_CZ.UTF-8 wine "$installer" /S >"$work/czech.log" 2>&1 </dev/null
    cmp "$tree/czech/czech_cs.qm" "$folder/czech_cs.qm" || fail "no Czech texts in the folder"
    [ -e "$menu/Glymark/Ukázky.lnk" ] || fail "the start menu is not Czech"
    remove_program
    [ ! -e "$folder/czech_cs.qm" ] || fail "the Czech texts are still there"
}

try_installer() {
    local shortcut user
    user=$disk/users/$(id -un)/AppData
    menu="$user/Roaming/Microsoft/Windows/Start Menu/Programs"
    program=$user/Local/Programs/Glymark
    folder=$documents/Glymark
    say "installing silently"
    logged wine "$installer" /S
    [ -f "$program/glymark.exe" ] || fail "nothing is installed in $program"
    [ ! -e "$folder/czech_cs.qm" ] || fail "Czech texts where Windows speaks English"
    cp "$program/samples/glymark-sample.xlsx" "$folder/"
    shortcut=$(winepath -w "$menu/Glymark/Glymark.lnk")
    say "starting from the start menu"
    # Shortcuts are not waited for: as long as any program runs, Wine does.
    (wine start "$shortcut" && wineserver -w) >"$work/program.log" 2>&1 </dev/null 9>&- &
    program_pid=$!
    use_program "$folder"
    say "starting it again, with the settings that it has written"
    (cd "$folder" && exec wine "$program/glymark.exe") >"$work/program.log" 2>&1 </dev/null 9>&- &
    program_pid=$!
    wait_for_window Glymark
    press ctrl+q
    wait_for_end
    say "comparing what was saved"
    /usr/bin/python3 packaging/windows/compare.py "$native" "$folder"
    diff <(tr -d '\r' <"$folder/config.ini") "$native/config.ini" || fail "the settings differ"
    say "removing it"
    remove_program
    (cd "$folder" && LC_ALL=C ls -A) | tr '\n' ' ' >"$work/left"
    [ "$(cat "$work/left")" = "analysis.xlsx config.ini data.xlsx glymark-sample.xlsx page.svg " ] ||
        fail "the user's folder does not hold what it should: $(cat "$work/left")"
}
