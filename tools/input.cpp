// Inputs: regular files are mapped (the reader copies what it keeps, so the
// mapping only has to live through one parse); pipes and standard input are
// read to the end; JSON Lines streams go through one buffer that grows only
// for a line longer than itself.
#include "input.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

namespace vxcli {

namespace {

constexpr size_t LINE_BUFFER = 1u << 20;         // first size of the line buffer
constexpr uint64_t PROGRESS_FROM = 100ull << 20; // streams shorter than this stay quiet
constexpr uint64_t PROGRESS_STEP = 4u << 20;     // bytes between looks at the clock
constexpr int64_t PROGRESS_EVERY_MS = 250;

// The line on screen, cleared before any message is printed.
progress_line *active_line = nullptr;

std::string errno_text(const std::string &name) {
    return "cannot read '" + name + "': " + std::strerror(errno);
}

int64_t now_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// Opens a file input, or hands out standard input for "-".
bool open_fd(const input_spec &in, int &fd, bool &own, std::string &error) {
    if (in.text == "-") {
        fd = 0;
        own = false;
        return true;
    }
    fd = ::open(in.text.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = "cannot open '" + in.text + "': " + std::strerror(errno);
        return false;
    }
    own = true;
    return true;
}

// read(2) that retries after a signal.
ssize_t read_some(int fd, char *buf, size_t n) {
    for (;;) {
        ssize_t r = ::read(fd, buf, n);
        if (r >= 0 || errno != EINTR) return r;
    }
}

} // namespace

whole_input::~whole_input() {
    if (map_) munmap(map_, map_len_);
}

bool whole_input::load(const input_spec &in, std::string &error) {
    if (in.is_inline) {
        view_ = in.text;
        return true;
    }
    int fd = -1;
    bool own = false;
    if (!open_fd(in, fd, own, error)) return false;
    struct stat st {};
    bool ok = true;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
        map_len_ = static_cast<size_t>(st.st_size);
        map_ = mmap(nullptr, map_len_, PROT_READ, MAP_PRIVATE, fd, 0);
        if (map_ == MAP_FAILED) {
            map_ = nullptr;
            error = errno_text(in.name);
            ok = false;
        } else {
            madvise(map_, map_len_, MADV_SEQUENTIAL);
            view_ = std::string_view(static_cast<const char *>(map_), map_len_);
        }
    } else {
        char chunk[65536];
        for (;;) {
            ssize_t n = read_some(fd, chunk, sizeof chunk);
            if (n < 0) {
                error = errno_text(in.name);
                ok = false;
                break;
            }
            if (n == 0) break;
            buf_.append(chunk, static_cast<size_t>(n));
        }
        view_ = buf_;
    }
    if (own) ::close(fd);
    return ok;
}

void progress_line::start(const std::string &name, uint64_t total) {
    enabled_ = isatty(2) != 0;
    name_ = name;
    total_ = total;
    done_ = 0;
    // A stream known to be long shows progress from the start; one of
    // unknown length once it has been long.
    next_draw_ = total >= PROGRESS_FROM ? 0 : PROGRESS_FROM;
    last_ms_ = 0;
    active_line = this;
}

void progress_line::advance(uint64_t bytes) {
    done_ += bytes;
    if (!enabled_ || done_ < next_draw_) return;
    if (total_ != 0 && total_ < PROGRESS_FROM) return;
    next_draw_ = done_ + PROGRESS_STEP;
    int64_t t = now_ms();
    if (t - last_ms_ < PROGRESS_EVERY_MS) return;
    last_ms_ = t;
    draw();
}

void progress_line::draw() {
    const uint64_t mb = done_ >> 20;
    if (total_)
        std::fprintf(stderr, "\rvxjson: %s: %llu of %llu MB (%u%%)", name_.c_str(),
                     static_cast<unsigned long long>(mb),
                     static_cast<unsigned long long>(total_ >> 20),
                     static_cast<unsigned>(done_ * 100 / total_));
    else
        std::fprintf(stderr, "\rvxjson: %s: %llu MB", name_.c_str(),
                     static_cast<unsigned long long>(mb));
    std::fflush(stderr);
    shown_ = true;
}

void progress_line::clear() {
    if (shown_) std::fputs("\r\033[K", stderr);
    shown_ = false;
}

void progress_line::finish() {
    clear();
    enabled_ = false;
    if (active_line == this) active_line = nullptr;
}

void clear_progress_line() {
    if (active_line) active_line->clear();
}

line_source::~line_source() {
    progress_.finish();
    if (own_fd_) ::close(fd_);
}

bool line_source::open(const input_spec &in, std::string &error) {
    name_ = in.name;
    if (in.is_inline) {
        // An inline text is its own buffer: no reading, no progress.
        buf_.assign(in.text.begin(), in.text.end());
        end_ = buf_.size();
        eof_ = true;
        return true;
    }
    if (!open_fd(in, fd_, own_fd_, error)) return false;
    struct stat st {};
    uint64_t total = 0;
    if (fstat(fd_, &st) == 0 && S_ISREG(st.st_mode)) {
        total = static_cast<uint64_t>(st.st_size);
        posix_fadvise(fd_, 0, 0, POSIX_FADV_SEQUENTIAL);
    }
    progress_.start(in.name, total);
    buf_.resize(LINE_BUFFER);
    return true;
}

// Moves the unfinished line to the front and reads more after it; the
// buffer doubles only when that line already fills it.
bool line_source::refill() {
    if (begin_ > 0) {
        std::memmove(buf_.data(), buf_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);
    ssize_t n = read_some(fd_, buf_.data() + end_, buf_.size() - end_);
    if (n < 0) {
        error_ = errno_text(name_);
        return false;
    }
    if (n == 0) {
        eof_ = true;
        progress_.finish();
    } else {
        end_ += static_cast<size_t>(n);
        progress_.advance(static_cast<uint64_t>(n));
    }
    return true;
}

bool line_source::next(std::string_view &line) {
    for (;;) {
        const char *base = buf_.data();
        const char *from = base + begin_ + scanned_;
        const void *nl = std::memchr(from, '\n', end_ - begin_ - scanned_);
        size_t stop;
        if (nl) {
            stop = static_cast<size_t>(static_cast<const char *>(nl) - base);
        } else if (eof_) {
            if (begin_ == end_) return false;
            stop = end_;
        } else {
            scanned_ = end_ - begin_;
            if (!refill()) return false;
            continue;
        }
        size_t len = stop - begin_;
        if (len > 0 && base[begin_ + len - 1] == '\r') --len;
        line = std::string_view(base + begin_, len);
        begin_ = stop < end_ ? stop + 1 : end_;
        scanned_ = 0;
        ++line_no_;
        return true;
    }
}

} // namespace vxcli
