// Files that fail on command: a layer between SQLite and the system's files that counts what SQLite asks for
// and refuses the n-th request of a kind, once or from there on.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstddef>

namespace test {

/// Requests that can fail. Locks of a file and locks of the write-ahead log's index are told apart.
enum class Request { open, access, remove, read, write, sync, truncate, file_size, lock, index_map, index_lock };
inline constexpr size_t kRequests = 11;

/// How a request is refused.
struct Refusal {
    Request request;
    int rc;             // what SQLite gets to hear, extended
    bool half = false;  // half of the bytes go through before
};

/// The layer. It is SQLite's default from its construction to its destruction.
class FailingFiles {
public:
    FailingFiles();
    ~FailingFiles();
    FailingFiles(const FailingFiles &) = delete;
    FailingFiles &operator=(const FailingFiles &) = delete;

    /// Counts from now on. The n-th request of the refusal's kind is refused (0: none is), and with `on` all after it.
    void start(const Refusal &refusal, long nth, bool on);
    /// All goes well again.
    void stop() { watching_ = false; }

    long count(Request request) const { return counts_[static_cast<size_t>(request)]; }
    bool refused() const { return refused_; }
    /// Files open now.
    int held() const { return held_; }
    /// The system's own files, for whoever is not to be disturbed.
    const char *undisturbed() const;

    /// For the layer's functions: whether this request is to be refused, and how; files come and go.
    bool refuses(Request request);
    const Refusal &refusal() const { return refusal_; }
    void hold(int more) { held_ += more; }

private:
    Refusal refusal_{};
    std::array<long, kRequests> counts_{};
    long nth_ = 0;
    bool on_ = false;
    bool watching_ = false;
    bool refused_ = false;
    int held_ = 0;
};

}  // namespace test
// SPDX-License-Identifier: Apache-2.0
