# shellcheck shell=bash
# A virtual desktop, and functions that operate the windows on it by mouse and keys; sourced after lib.sh. Nothing waits for a
# time: every wait is for a state that is seen from outside, with a deadline.

need_desktop() { need xvfb openbox xdotool xclip imagemagick; }

processes=() window=""
end_desktop() {
    local status=$?
    ((status == 0)) || import -window root failure.png 2>/dev/null || true
    kill "${processes[@]}" $window 2>/dev/null || true
    return "$status"
}

# Starts a display of its own with a window manager. Settings of the user, of the desktop and of Qt have no effect on it.
start_desktop() {
    trap end_desktop EXIT
    unset WAYLAND_DISPLAY XMODIFIERS QT_STYLE_OVERRIDE QT_SCALE_FACTOR QT_SCREEN_SCALE_FACTORS QT_FONT_DPI GTK_THEME
    export QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8
    export XDG_CONFIG_HOME=$PWD/settings XDG_DATA_HOME=$PWD/data XDG_RUNTIME_DIR=$PWD/runtime
    mkdir -m 700 runtime
    Xvfb -displayfd 7 -nolisten tcp -screen 0 1400x900x24 7>display 2>/dev/null &
    processes+=($!)
    await "a display" test -s display
    DISPLAY=:$(<display)
    export DISPLAY
    openbox >/dev/null 2>&1 &
    processes+=($!)
    await "a window manager" xdotool get_num_desktops
}

# await WHAT COMMAND...: until the command succeeds.
await() {
    local what=$1 deadline=$((SECONDS + 60))
    shift
    until "$@" >/dev/null 2>&1; do
        ((SECONDS < deadline)) || fail "Not seen within a minute: $what"
        sleep 0.05
    done
    say "seen: $what"
}

# Windows by their titles, which are regular expressions.
titled() { xdotool search --onlyvisible --name "^$1"; }
gone() { ! titled "$1"; }
has_focus() { [[ $(xdotool getactivewindow getwindowname) =~ ^$1 ]]; }
activate() { has_focus "$1" || { xdotool windowactivate "$(titled "$1" | head -1)" && has_focus "$1"; }; }
focus() { await "the focus in $1" activate "$1"; }
shot() { import -window "$(xdotool getactivewindow)" "$1"; }
ended() { ! kill -0 "$window"; }

# The pointer, in pixels of the window that has the focus.
point() { xdotool mousemove --window "$(xdotool getactivewindow)" "$1" "$2"; }
# colour X Y: of a pixel of that window.
colour() {
    import -window "$(xdotool getactivewindow)" -crop "1x1+$1+$2" -depth 8 rgb:- | od -An -tx1 | tr -d ' \n'
}
