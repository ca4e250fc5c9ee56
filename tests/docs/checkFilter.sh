#!/usr/bin/env bash
# The words that the filter of the reference adds for members without a comment, and those that it drops:  checkFilter.sh FILTER
set -euo pipefail

filter=$1
faults=0

# expect PROMISE: reads a header in which the words that the filter adds stand as "/** ... */ " in front of their line, and the
# comments that it drops after "(dropped)".
expect() {
    local expected header filtered
    expected=$(cat)
    header=$(sed 's|^/\*\* .* \*/ ||; s|^(dropped)||' <<<"$expected")
    expected=$(sed 's|^(dropped).*||' <<<"$expected")
    filtered=$(awk -f "$filter" <<<"$header")
    [[ $filtered != "$expected" ]] || return 0
    printf 'not so: %s\n%s\n' "$1" "$(diff <(printf '%s\n' "$expected") <(printf '%s\n' "$filtered"))" >&2
    faults=$((faults + 1))
}

expect "a function without a comment gets no words" <<'END'
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

expect "a comment that ends with a colon documents no member: each has a sentence of its own" <<'END'
class Layer {
public:
(dropped)    /// In pixels:
    int width() const;
    int height() const;
    /// Of the file.
    int depth() const;

(dropped)    /// How it lies
(dropped)    /// on the others:
    using Mode = int;
};
END

expect "bodies and continued lines are no members" <<'END'
class Layer {
public:
    /// In pixels.
    int area() const {
        area(this);
        return width() *
               height();
    }
/** @overload */     int area(int width,
        int height) const;
};
END

exit "$((faults > 0))"
