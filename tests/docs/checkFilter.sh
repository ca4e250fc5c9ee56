#!/usr/bin/env bash
# What the filter of the reference says for members without a comment, and where it stays silent:  checkFilter.sh FILTER
set -euo pipefail

filter=$1
faults=0

# expect PROMISE: reads a header in which the words that the filter is to add stand as "/** ... */ " in front of their line, and a
# dot that was a colon as "(:)".
expect() {
    local expected header filtered
    expected=$(cat)
    header=$(sed 's|^/\*\* .* \*/ ||; s|(:)$|:|' <<<"$expected")
    expected=$(sed 's|(:)$|.|' <<<"$expected")
    filtered=$(awk -f "$filter" <<<"$header")
    [[ $filtered != "$expected" ]] || return 0
    printf 'not so: %s\n%s\n' "$1" "$(diff <(printf '%s\n' "$expected") <(printf '%s\n' "$filtered"))" >&2
    faults=$((faults + 1))
}

expect "a function that nobody explains gets no words" <<'END'
/// A layer.
class Layer {
public:
    void show();
    int depth() const noexcept { return _depth; }
    /// Of its own.
    void hide();
    void lock();
};
END

expect "what the language explains gets words" <<'END'
class Layer {
public:
/** Deleted. */     Layer(Layer const&) = delete;
/** Deleted. */     Layer& operator=(Layer const&) = delete;
/** Moves. */     Layer(Layer&& other) noexcept;
/** Copies. */     explicit Layer(Layer const& other);
/** Ends the object's life. */     virtual ~Layer();
/** `file` and `line` are the place that raises it, as for `ExBase`. */     Layer(char const* file, int line);
};
END

expect "an overload has the words of the one above it, which has some" <<'END'
class Layer {
public:
    /// Moves it.
    void move(int x);
/** @overload */     void move(int x, int y);
    void remove();
    void remove(int x);
    Layer();
/** Copies. */     Layer(Layer const& other);
    explicit Layer(int x);
};
END

expect "a comment with a colon is about all up to the next blank line or comment" <<'END'
class Layer {
public:
    /// In pixels(:)
    int width() const;
/** In pixels. */     int height() const;
    /// Of the file.
    int depth() const;
    int age() const;

    /// How it lies
    /// on the others(:)
    using Mode = int;

    Mode mode() const;
};
END

expect "bodies and continued lines are nobody's members" <<'END'
class Layer {
public:
    /// In pixels(:)
    int area() const {
        check(this);
        return width() *
               height();
    }
/** In pixels. */     int rest(int width,
        int height) const;
};
END

exit "$((faults > 0))"
