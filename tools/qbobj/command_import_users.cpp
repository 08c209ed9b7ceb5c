// qbobj importUsers: a list file of users is checked whole and then inserted whole, with the groups that it names.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>

#include "command_line.h"
#include "failure.h"
#include "input.h"
#include "qbobj.h"

namespace qbcli {
namespace {

/// The one place from which the library reads a list.
constexpr char kListFile[] = "/tmp/user_list.txt";

extern "C" void remove_list_file_and_end(int signal_number)
{
    unlink(kListFile);
    signal(signal_number, SIG_DFL);
    raise(signal_number);
}

/// The list at its place for as long as it is needed. The folder is everybody's, so the file must be ours: it
/// is made new, no link is followed, nobody else may read it, and it goes away on every path, an interrupt included.
class PlacedList {
public:
    explicit PlacedList(std::string_view text)
    {
        const int file = open(kListFile, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (file < 0 && errno == EEXIST)
            fail("is there already: another import runs, or one left it behind; remove it then");
        if (file < 0) fail(strerror(errno));
        for (const int signal_number : kSignals) old_.push_back(signal(signal_number, remove_list_file_and_end));
        const bool written = write_all(file, text);
        const int failure = errno;
        if (close(file) == 0 && written) return;
        remove();
        fail(strerror(failure));
    }
    ~PlacedList() { remove(); }
    PlacedList(const PlacedList &) = delete;
    PlacedList &operator=(const PlacedList &) = delete;

private:
    static constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
    std::vector<void (*)(int)> old_;

    [[noreturn]] static void fail(const std::string &why)
    {
        throw Failure(std::string(kListFile) + ": " + why, Status::kFailed);
    }

    static bool write_all(int file, std::string_view text)
    {
        for (size_t done = 0; done < text.size();) {
            const ssize_t size = write(file, text.data() + done, text.size() - done);
            if (size < 0 && errno == EINTR) continue;
            if (size < 0) return false;
            done += static_cast<size_t>(size);
        }
        return true;
    }

    void remove()
    {
        unlink(kListFile);
        for (size_t i = 0; i < old_.size(); i++) signal(kSignals[i], old_[i]);
        old_.clear();
    }
};

/// A bar on a terminal's standard error; silent elsewhere.
class ProgressBar {
public:
    ProgressBar(std::string what, size_t whole) : what_(std::move(what)), whole_(whole), shown_(isatty(STDERR_FILENO))
    {
        draw();
    }
    ~ProgressBar()
    {
        if (shown_) fputs("\r\033[K", stderr);
    }
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void step()
    {
        done_ = std::min(done_ + 1, whole_);
        const auto now = std::chrono::steady_clock::now();
        if (now - drawn_ < std::chrono::milliseconds(50) && done_ < whole_) return;
        drawn_ = now;
        draw();
    }

private:
    static constexpr size_t kWidth = 40;
    std::string what_;
    size_t whole_;
    size_t done_ = 0;
    bool shown_;
    std::chrono::steady_clock::time_point drawn_{};

    void draw() const
    {
        if (!shown_) return;
        const size_t filled = whole_ ? kWidth * done_ / whole_ : 0;
        fprintf(stderr, "\r%s [%s%s] %zu/%zu", what_.c_str(), std::string(filled, '#').c_str(),
                std::string(kWidth - filled, '.').c_str(), done_, whole_);
        fflush(stderr);
    }
};

/// One database's import.
class Import {
public:
    explicit Import(const Database &database) : qbdb_(database.handle()), db_(database.connection()) {}

    /// Checks the whole list against the accounts that there are.
    /// @param origin What the list is called in messages.
    void check(std::string_view text, const std::string &origin)
    {
        AccountQuery local{};
        judge("getUserCollection", qbobj_getUserCollection(qbdb_, db_, &known_users_, &local, 0, &err_));
        judge("getGroupCollection", qbobj_getGroupCollection(qbdb_, db_, &known_groups_, &local, &err_));
        const ProgressBar progress("checking", 1);
        if (const uint32_t rc = checked(text)) blame_line(text, origin, rc);
    }

    size_t users() const { return length(users_.User); }

    Json groups() const
    {
        Json names = Json::array();
        for (const Group *group = groups_.Group; group; group = group->next) names.push_back(group->GroupName);
        return names;
    }

    /// Adds the missing groups, then the users.
    void insert()
    {
        if (groups_.Group) judge("addGroup", qbobj_addGroup(qbdb_, db_, groups_.Group, &err_));
        ProgressBar progress("importing", users());
        qbdb_set_statement_hook(qbdb_, see_statement, &progress);
        const uint32_t rc = qbobj_addUserList(qbdb_, db_, users_.User, &err_);
        qbdb_set_statement_hook(qbdb_, nullptr, nullptr);
        judge("addUserList", rc);
    }

private:
    qbdb_t *qbdb_;
    sqlite3 *db_;
    ErrorInfo err_{};
    UserCollection known_users_{};
    GroupCollection known_groups_{};
    UserCollection users_{};
    GroupCollection groups_{};

    uint32_t checked(std::string_view text)
    {
        users_ = {};
        groups_ = {};
        const PlacedList placed(text);
        return qbobj_checkUserList(qbdb_, db_, &users_, &groups_, &known_users_, &known_groups_, &err_);
    }

    /// Says which line was refused. The first such line ends a check, so it is the last of the shortest refused
    /// beginning.
    [[noreturn]] void blame_line(std::string_view text, const std::string &origin, uint32_t rc)
    {
        std::vector<size_t> ends;
        for (size_t at = 0; at < text.size(); at = ends.back())
            ends.push_back(std::min(text.find('\n', at), text.size() - 1) + 1);
        size_t good = 0;  // as many lines are taken
        size_t bad = ends.size();
        while (status_of(rc) == Status::kRefused && good + 1 < bad) {
            const size_t middle = good + (bad - good) / 2;
            (checked(text.substr(0, ends[middle - 1])) ? bad : good) = middle;
        }
        rc = checked(bad ? text.substr(0, ends[bad - 1]) : text);
        const bool of_a_line = status_of(rc) == Status::kRefused && bad;
        judge("checkUserList", rc, of_a_line ? " (" + origin + ", line " + std::to_string(bad) + ")" : "");
        throw Failure("the list was refused once and then taken", Status::kFailed);
    }

    static size_t length(const User *user)
    {
        size_t count = 0;
        for (; user; user = user->next) count++;
        return count;
    }

    static int see_statement(void *progress, const char *sql, const char *, uint32_t, const char **)
    {
        if (strncmp(sql, "INSERT INTO `$user`", 19) == 0) static_cast<ProgressBar *>(progress)->step();
        return 0;
    }

    void judge(const char *operation, uint32_t rc, const std::string &where = "") const
    {
        if (rc == 0) return;
        const char *message = err_.message ? err_.message : sqlite3_errstr(static_cast<int>(rc));
        throw Failure(message + where, operation, rc, err_, status_of(rc));
    }
};

void import_users(const Options &options, const std::string &path, bool dry_run)
{
    if (!dry_run) refuse_when_read_only(options);
    StandardInput input;
    const PrivateText text = path == "-" ? input.document() : read_file(path);
    const Database database = open_chosen_database(options);
    Import import(database);
    import.check(text, path == "-" ? "standard input" : path);
    if (!dry_run) import.insert();
    Json outcome;
    outcome["Users"] = import.users();
    outcome["NewGroups"] = import.groups();
    outcome["Imported"] = !dry_run;
    print_outcome(outcome, options.output);
}

}  // namespace

void add_import_users(CommandLine &line)
{
    struct Given {
        std::string path;
        bool dry_run = false;
    };
    const auto given = std::make_shared<Given>();
    CLI::App *command = add_command(line, "importUsers", "Check and insert a list file of users",
                                    [&line, given] { import_users(line.options, given->path, given->dry_run); });
    command
        ->add_option("FILE", given->path, "Lines of name, group, e-mail, password between tabs; - for standard input")
        ->required();
    command->add_flag("-n,--dry-run", given->dry_run, "Check the list and say what it would do");
    command->footer(
        "A line \"export_list\" says that the passwords below it are stored hashes, \"import_list\" that they are\n"
        "clear text, as they are without either. The list is inserted whole or not at all; groups that it names and\n"
        "that there are not are added first.");
}

}  // namespace qbcli
// SPDX-License-Identifier: Apache-2.0
