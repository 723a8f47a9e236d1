// Batches of lines go to the workers in input order and come back in the
// same order: at most two batches per worker are in flight, so memory stays
// bounded by the workers times a batch (a quarter of a megabyte, or one line when
// a line is longer).
#include "lines_parallel.h"

#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "input.h"

namespace vxcli {

namespace {

constexpr size_t BATCH_BYTES = 256u << 10;
constexpr unsigned BATCHES_PER_WORKER = 2;

struct line_ref {
    size_t offset;
    size_t len;
    uint64_t number;
};

struct batch {
    std::string text; // the lines, one after another
    std::vector<line_ref> lines;
    std::string out; // what the lines wrote
    std::string err; // their messages
    tally t;
    bool done = false;
};

class line_pool {
public:
    line_pool(const read_options &opts, const doc_job &job, const std::string &name)
        : opts_(opts), job_(job), name_(name) {}
    ~line_pool() { stop(); }

    void start(unsigned jobs) {
        for (unsigned i = 0; i < jobs; ++i) workers_.emplace_back([this] { work(); });
        window_ = jobs * BATCHES_PER_WORKER;
    }

    // Queues a batch, first writing out finished ones while the window is full.
    void submit(std::unique_ptr<batch> b, tally &t) {
        std::unique_lock lock(mutex_);
        queue_.push_back(std::move(b));
        ready_.notify_one();
        while (queue_.size() >= window_) write_front(lock, t);
    }

    // Writes every batch out and ends the workers.
    void drain(tally &t) {
        std::unique_lock lock(mutex_);
        while (!queue_.empty()) write_front(lock, t);
        lock.unlock();
        stop();
    }

    bool failed() {
        std::lock_guard lock(mutex_);
        return fatal_;
    }

private:
    void write_front(std::unique_lock<std::mutex> &lock, tally &t) {
        done_.wait(lock, [&] { return queue_.front()->done; });
        std::unique_ptr<batch> b = std::move(queue_.front());
        queue_.pop_front();
        --claimed_;
        lock.unlock();
        if (!b->out.empty() &&
            std::fwrite(b->out.data(), 1, b->out.size(), stdout) != b->out.size())
            b->t.fatal = true;
        if (!b->err.empty()) {
            clear_progress_line();
            std::fputs(b->err.c_str(), stderr);
        }
        t.add(b->t);
        lock.lock();
        if (b->t.fatal) fatal_ = true;
    }

    void stop() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        ready_.notify_all();
        for (std::thread &w : workers_) w.join();
        workers_.clear();
    }

    void work() {
        std::unique_ptr<session> s = std::make_unique<session>(opts_);
        for (;;) {
            batch *b = nullptr;
            {
                std::unique_lock lock(mutex_);
                ready_.wait(lock, [&] { return stopping_ || claimed_ < queue_.size(); });
                if (claimed_ >= queue_.size()) return;
                b = queue_[claimed_++].get();
            }
            run(*s, *b);
            {
                std::lock_guard lock(mutex_);
                b->done = true;
            }
            done_.notify_all();
        }
    }

    void run(session &s, batch &b) {
        capture_messages(&b.err);
        if (!s.ready()) {
            tool_error("out of memory");
            b.t.fatal = true;
        }
        for (const line_ref &l : b.lines) {
            if (b.t.fatal) break;
            b.t.count(job_(s, std::string_view(b.text).substr(l.offset, l.len), name_, l.number));
            s.reset();
        }
        if (s.ready()) s.take_output(b.out);
        capture_messages(nullptr);
    }

    const read_options &opts_;
    const doc_job &job_;
    const std::string &name_;
    std::vector<std::thread> workers_;
    std::mutex mutex_;
    std::condition_variable ready_; // a batch to claim, or stop
    std::condition_variable done_;  // a batch finished
    std::deque<std::unique_ptr<batch>> queue_;
    size_t claimed_ = 0; // batches at the front taken by workers
    size_t window_ = 1;
    bool stopping_ = false;
    bool fatal_ = false;
};

} // namespace

bool is_blank_line(std::string_view line) {
    for (char c : line)
        if (c != ' ' && c != '\t' && c != '\r' && c != '\f') return false;
    return true;
}

void run_lines_parallel(const input_spec &in, const read_options &opts, unsigned jobs,
                        const doc_job &job, tally &t) {
    line_source src;
    if (!t.open(src, in)) return;
    line_pool pool(opts, job, in.name);
    pool.start(jobs);
    auto b = std::make_unique<batch>();
    std::string_view line;
    while (src.next(line)) {
        if (is_blank_line(line)) continue;
        b->lines.push_back({b->text.size(), line.size(), src.line_number()});
        b->text.append(line);
        if (b->text.size() >= BATCH_BYTES) {
            pool.submit(std::move(b), t);
            b = std::make_unique<batch>();
            if (pool.failed()) break;
        }
    }
    if (!b->lines.empty() && !pool.failed()) pool.submit(std::move(b), t);
    pool.drain(t);
    if (!src.error().empty()) {
        tool_error(src.error());
        t.trouble = true;
    }
}

} // namespace vxcli
