// Getting texts in: whole inputs (a file mapped or read, standard input, an
// inline text) and JSON Lines streams read through a fixed buffer.
#ifndef VXJSON_TOOL_INPUT_H
#define VXJSON_TOOL_INPUT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "options.h"

namespace vxcli {

// A whole input held in memory, mapped when it is a regular file.
class whole_input {
public:
    whole_input() = default;
    ~whole_input();
    whole_input(const whole_input &) = delete;
    whole_input &operator=(const whole_input &) = delete;

    // False with a message in `error` when the input cannot be read.
    bool load(const input_spec &in, std::string &error);
    std::string_view text() const { return view_; }

private:
    void *map_ = nullptr;
    size_t map_len_ = 0;
    std::string buf_;
    std::string_view view_;
};

// A progress line on a terminal for long streams.
class progress_line {
public:
    // `total` 0 when the size is unknown (a pipe).
    void start(const std::string &name, uint64_t total);
    void advance(uint64_t bytes);
    void clear(); // take the line off the screen until the next update
    void finish();

private:
    void draw();
    bool enabled_ = false; // standard error is a terminal
    bool shown_ = false;   // something was drawn and must be cleared
    std::string name_;
    uint64_t total_ = 0;
    uint64_t done_ = 0;
    uint64_t next_draw_ = 0; // bytes at which to look at the clock again
    int64_t last_ms_ = 0;
};

// Clears the progress line, if one is shown, before a message.
void clear_progress_line();

// The lines of an input, one at a time, in memory bounded by the longest
// line.  A carriage return before the line feed is dropped.
class line_source {
public:
    line_source() = default;
    ~line_source();
    line_source(const line_source &) = delete;
    line_source &operator=(const line_source &) = delete;

    bool open(const input_spec &in, std::string &error);
    // The next line, without its end; false at the end or on a read error
    // (then error() says why).
    bool next(std::string_view &line);
    uint64_t line_number() const { return line_no_; }
    const std::string &error() const { return error_; }

private:
    bool refill();
    int fd_ = -1;
    bool own_fd_ = false;
    bool eof_ = false;
    std::vector<char> buf_;
    size_t begin_ = 0;   // first byte of the next line
    size_t scanned_ = 0; // bytes from begin_ known to hold no line feed
    size_t end_ = 0;     // end of the bytes read
    uint64_t line_no_ = 0;
    std::string error_;
    std::string name_;
    progress_line progress_;
};

} // namespace vxcli

#endif
