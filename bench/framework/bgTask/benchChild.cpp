// The children of the bench:
//
//   flood BYTES LENGTH   writes lines of LENGTH bytes, their ends included, in large pieces
//   pace LINES RATE      writes lines of 50 bytes, so many a second
//   drain                reads standard input to its end
//   end                  waits 1.2 s, writes the time, and exits
//   error                waits 1.2 s, and writes the time to standard error

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

void write(int stream, std::string const& text) {
    for (std::size_t done = 0; done < text.size();) {
        ssize_t const count = ::write(stream, text.data() + done, text.size() - done);
        if (count < 0) ::_exit(1);
        done += static_cast<std::size_t>(count);
    }
}

void flood(std::size_t bytes, std::size_t length) {
    std::string line(length, 'x');
    line.back() = '\n';
    std::string piece;
    while (piece.size() < 64 * 1024)
        piece += line;
    for (; bytes > piece.size(); bytes -= piece.size())
        write(STDOUT_FILENO, piece);
    write(STDOUT_FILENO, piece.substr(0, bytes));
}

// In portions of a millisecond, so that sleeping is precise enough.
void pace(std::size_t lines, std::size_t rate) {
    std::string const line = std::string(49, 'x') + "\n";
    auto const begin = std::chrono::steady_clock::now();
    for (std::size_t done = 0; done < lines;) {
        std::string portion;
        for (std::size_t end = std::min(done + rate / 1000, lines); done < end; ++done)
            portion += line;
        write(STDOUT_FILENO, portion);
        std::this_thread::sleep_until(begin + std::chrono::microseconds(done * 1'000'000 / rate));
    }
}

void drain() {
    std::string piece(64 * 1024, 0);
    while (::read(STDIN_FILENO, piece.data(), piece.size()) > 0) {
    }
}

void writeTime(int stream) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    write(stream, std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "\n");
}

} // namespace

int main(int, char** arguments) {
    std::string const mode = arguments[1];
    if (mode == "flood") flood(std::stoul(arguments[2]), std::stoul(arguments[3]));
    if (mode == "pace") pace(std::stoul(arguments[2]), std::stoul(arguments[3]));
    if (mode == "drain") drain();
    if (mode == "end") writeTime(STDOUT_FILENO);
    if (mode == "error") writeTime(STDERR_FILENO);
    ::_exit(0);
}
