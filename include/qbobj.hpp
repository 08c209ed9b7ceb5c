/**
 * @file qbobj.hpp
 * The object library for C++20, in one header over qbobj.h and qbdb.h: a database that closes itself, results that are
 * a value or an error, lists as ranges, and one template by which every operation is called.
 *
 * @code
 * qb::Result<qb::Database> db = qb::Database::open("appliance.db");
 * if (!db) return fprintf(stderr, "%s\n", db.error().text().c_str()), 1;
 * auto users = qb::call<qbobj_getUserCollection>(*db, nullptr, 0);
 * if (users)
 *     for (const User &user : qb::List(users->User)) puts(user.UserName);
 * @endcode
 *
 * The C interface's rules hold: what a call returns lives in the handle's pool and goes away with it, or with the
 * qb::Request that was open; one handle belongs to one thread at a time. Nothing here throws but Result::value() of a
 * failure, which ends the process where the program is compiled without exceptions.
 */
#ifndef QBOBJ_HPP
#define QBOBJ_HPP

#include <array>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "qbdb.h"
#include "qbdb_journal.h"
#include "qbobj.h"

#if __cplusplus < 202002L
#error "qbobj.hpp needs C++20"
#endif

extern "C" void xmlFreeNode(struct _xmlNode *node);

namespace qb {
// Units of a program that are compiled with and without exceptions do not share these functions.
#ifdef __cpp_exceptions
inline namespace v1 {
#else
inline namespace v1_without_exceptions {
#endif

// ---- Errors and results ---------------------------------------------------------------------------------------------

/// Why a call failed. It owns its message and outlives the pool.
struct Error {
    /// The operation's code; -1 for a look-up that found nothing or failed. A database that could not be opened, or
    /// a transaction that could not begin, gives SQLite's result code (5: locked).
    int32_t code = 0;
    const char *meaning = "";    ///< What the code means, a static text.
    std::string message{};       ///< What the operation reported; empty when it reported nothing.
    const char *file = nullptr;  ///< Source file of the report, a static text; null without one.
    uint32_t line = 0;           ///< Source line of the report.
    const char *operation = "";  ///< The function that was called, a static text.

    /// All in one line: "qbobj_addUser: 801 User (anna) already exists."
    [[nodiscard]] std::string text() const
    {
        std::string line_of_text = std::string(operation) + ": ";
        if (code >= 0) line_of_text += std::to_string(code) + " ";
        return line_of_text + (message.empty() ? std::string(meaning) : message);
    }
};

#ifdef __cpp_exceptions
/// Thrown by Result::value() of a failure.
class BadResult : public std::exception {
public:
    explicit BadResult(Error error) : error_(std::move(error)), text_(error_.text()) {}
    [[nodiscard]] const char *what() const noexcept override { return text_.c_str(); }
    /// Why the call failed.
    [[nodiscard]] const Error &error() const noexcept { return error_; }

private:
    Error error_;
    std::string text_;
};
#endif

template <class T>
class Result;

namespace detail {

[[noreturn]] inline void end(const std::string &text)
{
    std::fprintf(stderr, "%s\n", text.c_str());
    std::abort();
}

[[noreturn]] inline void no_value(const Error &error)
{
#ifdef __cpp_exceptions
    throw BadResult(error);
#else
    end(error.text());
#endif
}

template <class T>
inline constexpr bool is_result = false;
template <class T>
inline constexpr bool is_result<Result<T>> = true;

/// Stands for the value where there is none to tell.
struct Nothing {};

}  // namespace detail

/// A value or an Error, with the names of std::expected. What a call returned although it succeeded is its warning().
template <class T>
class [[nodiscard]] Result {
    using Held = std::conditional_t<std::is_void_v<T>, detail::Nothing, T>;

public:
    using value_type = T;
    using error_type = Error;

    /// A success without a value.
    Result() requires std::is_void_v<T> : held_(Held{}) {}
    /// A success.
    Result(Held value) requires(!std::is_void_v<T>) : held_(std::move(value)) {}
    /// A failure.
    Result(Error error) : error_(std::move(error)) {}

    /// Whether there is a value.
    [[nodiscard]] bool has_value() const noexcept { return held_.has_value(); }
    explicit operator bool() const noexcept { return has_value(); }

    /// @name The value. Of a failure it throws BadResult, or ends the process where there are no exceptions.
    /// @{
    std::add_lvalue_reference_t<T> value() & { return get(*this); }
    std::add_lvalue_reference_t<const T> value() const & { return get(*this); }
    T value() &&
    {
        if (!held_) detail::no_value(error_);
        if constexpr (!std::is_void_v<T>) return std::move(*held_);
    }
    std::add_lvalue_reference_t<T> operator*() & { return value(); }
    std::add_lvalue_reference_t<const T> operator*() const & { return value(); }
    T operator*() && { return std::move(*this).value(); }
    Held *operator->() requires(!std::is_void_v<T>) { return &value(); }
    const Held *operator->() const requires(!std::is_void_v<T>) { return &value(); }
    /// @}

    /// The value, or another one in place of a failure.
    template <class U>
    [[nodiscard]] Held value_or(U &&other) const &requires(!std::is_void_v<T>)
    {
        return held_ ? *held_ : static_cast<Held>(std::forward<U>(other));
    }
    template <class U>
        [[nodiscard]] Held value_or(U &&other) && requires(!std::is_void_v<T>)
    {
        return held_ ? std::move(*held_) : static_cast<Held>(std::forward<U>(other));
    }

    /// @name Why it failed. Of a success it ends the process.
    /// @{
    [[nodiscard]] const Error &error() const &
    {
        if (held_) detail::end("qb::Result: a success has no error");
        return error_;
    }
    [[nodiscard]] Error error() &&
    {
        if (held_) detail::end("qb::Result: a success has no error");
        return std::move(error_);
    }
    /// @}

    /// What an operation reported although it succeeded; null as a rule.
    [[nodiscard]] const Error *warning() const noexcept { return held_ && error_.code != 0 ? &error_ : nullptr; }
    /// The same success with a warning.
    Result with_warning(Error error) &&
    {
        error_ = std::move(error);
        return std::move(*this);
    }

    /// @name Going on. A function is called with the value (without an argument where there is none), or or_else's with
    /// the error.
    /// @{

    /// The Result of `next`, or this error.
    template <class F>
    auto and_then(F &&next) &
    {
        return chain(*this, std::forward<F>(next));
    }
    template <class F>
    auto and_then(F &&next) const &
    {
        return chain(*this, std::forward<F>(next));
    }
    template <class F>
    auto and_then(F &&next) &&
    {
        return chain(std::move(*this), std::forward<F>(next));
    }
    /// A Result of what `change` makes of the value, or this error.
    template <class F>
    auto transform(F &&change) &
    {
        return map(*this, std::forward<F>(change));
    }
    template <class F>
    auto transform(F &&change) const &
    {
        return map(*this, std::forward<F>(change));
    }
    template <class F>
    auto transform(F &&change) &&
    {
        return map(std::move(*this), std::forward<F>(change));
    }
    /// This value, or the Result of `rescue`.
    template <class F>
    Result or_else(F &&rescue) const &
    {
        return held_ ? *this : Result(std::invoke(std::forward<F>(rescue), error_));
    }
    template <class F>
    Result or_else(F &&rescue) &&
    {
        return held_ ? std::move(*this) : Result(std::invoke(std::forward<F>(rescue), std::move(error_)));
    }
    /// @}

private:
    template <class Self>
    static decltype(auto) get(Self &self)
    {
        if (!self.held_) detail::no_value(self.error_);
        if constexpr (std::is_void_v<T>) return;
        else return (*self.held_);
    }
    template <class Self, class F>
    static decltype(auto) invoke(Self &&self, F &&function)
    {
        if constexpr (std::is_void_v<T>) return std::invoke(std::forward<F>(function));
        else return std::invoke(std::forward<F>(function), *std::forward<Self>(self).held_);
    }
    template <class Self, class F>
    static auto chain(Self &&self, F &&next)
    {
        using Next = std::remove_cvref_t<decltype(invoke(std::forward<Self>(self), std::forward<F>(next)))>;
        static_assert(detail::is_result<Next>, "qb::Result::and_then: the function returns a qb::Result");
        if (!self.held_) return Next(std::forward<Self>(self).error_);
        return invoke(std::forward<Self>(self), std::forward<F>(next));
    }
    template <class Self, class F>
    static auto map(Self &&self, F &&change)
    {
        using Changed = std::remove_cvref_t<decltype(invoke(std::forward<Self>(self), std::forward<F>(change)))>;
        if (!self.held_) return Result<Changed>(std::forward<Self>(self).error_);
        if constexpr (std::is_void_v<Changed>) {
            invoke(std::forward<Self>(self), std::forward<F>(change));
            return Result<void>();
        } else {
            return Result<Changed>(invoke(std::forward<Self>(self), std::forward<F>(change)));
        }
    }

    std::optional<Held> held_{};
    Error error_{};
};

// ---- Lists, chains, optional fields, texts --------------------------------------------------------------------------

/// A record that links to the next one of a list.
template <class T>
concept Linked = requires(T record)
{
    {
        record.next
        } -> std::convertible_to<const T *>;
};

/// The elements of a linked list as a range: `for (User &user : qb::List(users.User))`. It owns nothing.
template <Linked T>
class List : public std::ranges::view_base {
public:
    /// Goes from element to element.
    class iterator {
    public:
        using value_type = std::remove_cv_t<T>;
        using difference_type = std::ptrdiff_t;
        using pointer = T *;
        using reference = T &;
        using iterator_category = std::forward_iterator_tag;

        iterator() = default;
        explicit iterator(T *at) : at_(at) {}
        T &operator*() const { return *at_; }
        T *operator->() const { return at_; }
        iterator &operator++()
        {
            at_ = at_->next;
            return *this;
        }
        iterator operator++(int)
        {
            const iterator before = *this;
            at_ = at_->next;
            return before;
        }
        bool operator==(const iterator &) const = default;

    private:
        T *at_ = nullptr;
    };

    List() = default;
    /// @param first First element, or null for an empty list.
    List(T *first) : first_(first) {}
    [[nodiscard]] iterator begin() const { return iterator(first_); }
    [[nodiscard]] iterator end() const { return iterator(); }
    [[nodiscard]] bool empty() const { return !first_; }
    explicit operator bool() const { return first_; }
    /// The first element of a list that is not empty.
    [[nodiscard]] T &front() const { return *first_; }
    /// The first element as the C interface takes it; null for an empty list.
    [[nodiscard]] T *first() const { return first_; }

private:
    T *first_ = nullptr;
};

/// Links the elements of an array, in their order, for an operation that takes a chain of records or a list.
/// @param records The elements; they stay where they are and keep what they hold but the link.
/// @return The first one, or null when there is none.
template <std::ranges::contiguous_range R>
requires Linked<std::ranges::range_value_t<R>> && std::ranges::sized_range<R> && std::ranges::borrowed_range<R>
auto *chain(R &&records)
{
    auto *elements = std::ranges::data(records);
    std::ranges::range_value_t<R> *next = nullptr;
    for (auto i = std::ranges::size(records); i-- > 0;) {
        elements[i].next = next;
        next = elements + i;
    }
    return next;
}

/// A number of a record together with its null indicator, as std::optional has it.
template <std::integral T>
class Maybe {
public:
    Maybe(T &value, int32_t &indicator) : value_(value), void_(indicator) {}
    [[nodiscard]] bool has_value() const { return void_ == 0; }
    explicit operator bool() const { return has_value(); }
    [[nodiscard]] T value_or(T other) const { return has_value() ? value_ : other; }
    [[nodiscard]] std::optional<std::remove_const_t<T>> get() const
    {
        return has_value() ? std::optional<std::remove_const_t<T>>(value_) : std::nullopt;
    }
    const Maybe &operator=(std::type_identity_t<T> value) const
    {
        value_ = value;
        void_ = 0;
        return *this;
    }
    /// Makes it absent.
    void reset() const
    {
        value_ = 0;
        void_ = 1;
    }

private:
    T &value_;
    int32_t &void_;
};

/// An optional number of a record: `qb::maybe(share.QuotaMB, share.QuotaMB_void) = 500`.
template <std::integral T>
requires(!std::is_const_v<T>) Maybe<T> maybe(T &value, int32_t &indicator)
{
    return {value, indicator};
}
/// The same of a record that is only read.
template <std::integral T>
std::optional<T> maybe(const T &value, const int32_t &indicator)
{
    return indicator == 0 ? std::optional<T>(value) : std::nullopt;
}

/// A text of a record, empty where it is null.
inline std::string_view text(const char *field)
{
    return field ? std::string_view(field) : std::string_view();
}

// ---- Tables ---------------------------------------------------------------------------------------------------------

namespace detail {

/// The rows before the one that ends a table.
template <class Row, class Ends>
std::span<const Row> table(const Row *rows, Ends ends)
{
    size_t count = 0;
    while (rows && !ends(rows[count])) count++;
    return {rows, count};
}

/// Name of a record type.
template <class T>
inline constexpr const char *type_name = nullptr;
#define QBOBJ_HPP_NAME(T) \
    template <>           \
    inline constexpr const char *type_name<T> = #T;
QBOBJ_FOR_EACH_TYPE(QBOBJ_HPP_NAME)
#undef QBOBJ_HPP_NAME

}  // namespace detail

/// One of the record types of qbobj_types().
template <class T>
concept Record = detail::type_name<T>
!= nullptr;

/// @name The library's tables as arrays.
/// @{
inline std::span<const QbobjOperation> operations()
{
    return detail::table(qbobj_operations(), [](const QbobjOperation &row) { return !row.name; });
}
inline std::span<const QbobjType> types()
{
    return detail::table(qbobj_types(), [](const QbobjType &row) { return !row.name; });
}
inline std::span<const QbobjCode> codes()
{
    return detail::table(qbobj_codes(), [](const QbobjCode &row) { return row.code == 0; });
}
/// The fields of a type, without the table's header.
inline std::span<const QbobjField> fields(const QbobjField *type)
{
    return detail::table(type + 1, [](const QbobjField &field) { return field.kind == '.'; });
}
template <Record T>
std::span<const QbobjField> fields()
{
    return fields(qbobj_find_type(detail::type_name<T>));
}
/// The words that a text field may hold; none when it may hold any text.
inline std::span<const char *const> words(const QbobjField *type, const QbobjField *field)
{
    return detail::table(qbobj_field_words(type, field), [](const char *word) { return !word; });
}
/// @}

/// A record in which everything is absent. In `User{}` and its like the optional numbers are given, as 0.
template <Record T>
T absent()
{
    T record{};
    for (const QbobjField &field : fields<T>()) {
        if (!(field.flags & QBOBJ_FIELD_OPTIONAL) || field.kind == 's' || field.kind == 'o') continue;
        const size_t size = field.kind == 'l' || field.kind == 'n' ? sizeof(int64_t) : sizeof(int32_t);
        constexpr int32_t kAbsent = 1;  // the indicator stands in the slot before the number
        std::memcpy(reinterpret_cast<char *>(&record) + field.position - size, &kAbsent, sizeof kAbsent);
    }
    return record;
}

/// An XML tree that an operation returned; freed with it.
class Xml {
public:
    explicit Xml(struct _xmlNode *node = nullptr) : node_(node) {}
    /// The root, or null.
    [[nodiscard]] struct _xmlNode *get() const { return node_.get(); }
    /// Hands the root over to the caller, who frees it.
    struct _xmlNode *release() { return node_.release(); }

private:
    struct Free {
        void operator()(struct _xmlNode *node) const { xmlFreeNode(node); }
    };
    std::unique_ptr<struct _xmlNode, Free> node_;
};

// ---- The database ---------------------------------------------------------------------------------------------------

/// How to open a database.
enum class Open : unsigned {
    existing = QBDB_OPEN_EXISTING,  ///< Read and write a database that exists.
    create = QBDB_OPEN_CREATE,      ///< Create a fresh one; the file must not exist or be empty.
    readonly = QBDB_OPEN_READONLY,  ///< Read a database that exists.
};

namespace detail {

/// An open handle. It stays where it is when its owners are moved.
struct Handle {
    qbdb_t *qbdb = nullptr;
    sqlite3 *db = nullptr;
    bool rolled_back = false;
    bool trial = false;

    Handle() = default;
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;
    ~Handle() { qbdb_close(qbdb); }
};

}  // namespace detail

/// The time of one request: what calls return meanwhile goes away with it. It can be moved, and keeps the database
/// open.
class Request {
public:
    Request(Request &&) noexcept = default;
    Request &operator=(Request &&other) noexcept
    {
        if (this != &other) {
            finish();
            handle_ = std::move(other.handle_);
        }
        return *this;
    }
    ~Request() { finish(); }

    /// Frees what was returned so far, and goes on.
    Result<void> restart()
    {
        if (!handle_ || qbdb_request_begin(handle_->qbdb) != 0)
            return Error{.code = SQLITE_NOMEM, .meaning = "out of memory", .operation = "qbdb_request_begin"};
        return {};
    }
    /// Frees what was returned and ends the request before its time.
    void finish()
    {
        if (handle_) qbdb_request_end(handle_->qbdb);
        handle_.reset();
    }

private:
    friend class Database;
    explicit Request(std::shared_ptr<detail::Handle> handle) : handle_(std::move(handle)) {}

    std::shared_ptr<detail::Handle> handle_;
};

/// The time of a trial: calls run for real, and what they change is taken back at once.
class Trial {
public:
    Trial(Trial &&) noexcept = default;
    Trial &operator=(Trial &&) = delete;
    ~Trial()
    {
        if (!handle_) return;
        void *changes = nullptr;
        int size = 0;
        qbdb_changes_end(handle_->qbdb, &changes, &size);
        sqlite3_free(changes);
        handle_->trial = false;
    }

private:
    friend class Database;
    explicit Trial(std::shared_ptr<detail::Handle> handle) : handle_(std::move(handle)) { handle_->trial = true; }

    std::shared_ptr<detail::Handle> handle_;
};

/// An open database: closed, and everything that calls returned freed, when it and its Request are gone. It can be
/// moved, not copied. It takes the connection's rollback hook, by which a change that could not be stored is told.
class Database {
public:
    /// Opens or creates a database.
    /// @param path   File name.
    /// @param mode   How.
    /// @param volume With Open::create the name of a first volume; empty for none.
    /// @return The database, or why not: SQLite's result code (14 cannot open, 26 not an appliance database, …).
    static Result<Database> open(const std::string &path, Open mode = Open::existing, const std::string &volume = {})
    {
        char why[512] = "";
        auto handle = std::make_shared<detail::Handle>();
        const int rc = qbdb_open(path.c_str(), static_cast<unsigned>(mode), volume.empty() ? nullptr : volume.c_str(),
                                 &handle->qbdb, &handle->db, why, sizeof why);
        if (rc != 0) return Error{.code = rc, .meaning = sqlite3_errstr(rc), .message = why, .operation = "qbdb_open"};
        sqlite3_rollback_hook(
            handle->db, [](void *self) { static_cast<detail::Handle *>(self)->rolled_back = true; }, handle.get());
        return Database(std::move(handle));
    }

    Database(Database &&) noexcept = default;
    Database &operator=(Database &&) noexcept = default;

    /// The handle, for the calls of qbdb.h.
    [[nodiscard]] qbdb_t *handle() const { return get().qbdb; }
    /// The connection.
    [[nodiscard]] sqlite3 *connection() const { return get().db; }
    /// How long a statement waits for another process's lock.
    void set_timeout(std::chrono::milliseconds limit) const
    {
        qbdb_set_timeout(get().qbdb, static_cast<uint32_t>(limit.count()));
    }

    /// Begins a request.
    /// @return The request. Code 21 while another one of this database is open, 7 when there is no memory.
    [[nodiscard]] Result<Request> request() const
    {
        constexpr const char *kCall = "qbdb_request_begin";
        if (get().qbdb->request_pool)
            return Error{.code = SQLITE_MISUSE, .meaning = "a request is open already", .operation = kCall};
        if (qbdb_request_begin(handle_->qbdb) != 0)
            return Error{.code = SQLITE_NOMEM, .meaning = "out of memory", .operation = kCall};
        return Request(handle_);
    }

    /// Begins a trial.
    /// @return The trial. Code 21 while changes are recorded already, 7 when there is no memory.
    [[nodiscard]] Result<Trial> trial() const
    {
        if (const int rc = qbdb_changes_begin(get().qbdb, QBDB_CHANGES_DISCARD))
            return Error{.code = rc, .meaning = sqlite3_errstr(rc), .operation = "qbdb_changes_begin"};
        return Trial(handle_);
    }

private:
    template <auto Operation, class... Given>
    friend auto call(const Database &db, Given &&...given);
    explicit Database(std::shared_ptr<detail::Handle> handle) : handle_(std::move(handle)) {}
    [[nodiscard]] detail::Handle &get() const
    {
        if (!handle_) detail::end("qb::Database: it was moved away");
        return *handle_;
    }

    std::shared_ptr<detail::Handle> handle_;
};

// ---- Calls ----------------------------------------------------------------------------------------------------------

namespace detail {

enum class Direction { in, out, inout };

/// What the list of operations says of one argument.
struct Way {
    Direction direction = Direction::in;
    bool optional = false;
};

/// What the list of operations says of one operation.
struct Described {
    const char *name = nullptr;  ///< Null for a function that is no operation.
    QbobjReturn returns = QBOBJ_RETURNS_CODE;
    bool changes = false;
    size_t count = 0;
    std::array<Way, QBOBJ_MAX_ARGUMENTS> ways{};

    constexpr Described() = default;
    constexpr Described(const char *function, QbobjReturn meaning, bool changing, std::string_view directions)
        : name(function), returns(meaning), changes(changing)
    {
        while (!directions.empty()) {
            const size_t length = directions.find(' ');
            std::string_view word = directions.substr(0, length);
            directions.remove_prefix(length == std::string_view::npos ? directions.size() : length + 1);
            Way &way = ways[count++];
            way.optional = word.ends_with('?');
            if (way.optional) word.remove_suffix(1);
            way.direction = word == "in" ? Direction::in : word == "out" ? Direction::out : Direction::inout;
        }
    }

    /// The number of values that a caller gives for the first arguments.
    [[nodiscard]] constexpr size_t given(size_t arguments) const
    {
        size_t number = 0;
        for (size_t i = 0; i < arguments; i++)
            if (ways[i].direction != Direction::out) number++;
        return number;
    }
};

inline constexpr bool kAccess_READS = false;
inline constexpr bool kAccess_CHANGES = true;

template <auto Function>
inline constexpr Described described{};
#define QBOBJ_HPP_DESCRIBE(function, returns, access, directions) \
    template <>                                                   \
    inline constexpr Described described<function>{#function, QBOBJ_RETURNS_##returns, kAccess_##access, directions};
QBOBJ_FOR_EACH_OPERATION(QBOBJ_HPP_DESCRIBE)
#undef QBOBJ_HPP_DESCRIBE

/// Takes an operation's type apart.
template <class F>
struct Signature;

template <class... All>
struct Signature<uint32_t (*)(qbdb_t *, sqlite3 *, All...)> {
    static constexpr size_t count = sizeof...(All) - 1;  // the last one is the error record
    template <size_t I>
    using Type = std::tuple_element_t<I, std::tuple<All...>>;
};

template <class T>
using Pointed = std::remove_pointer_t<T>;

template <class G>
concept SaysNull =
    std::same_as<std::remove_cvref_t<G>, std::nullptr_t> || std::same_as<std::remove_cvref_t<G>, std::nullopt_t>;

template <class G, class T>
concept FitsNumber = std::integral<std::remove_cvref_t<G>> && std::is_signed_v<T>
== std::is_signed_v<std::remove_cvref_t<G>> && sizeof(std::remove_cvref_t<G>) <= sizeof(T);

template <class G>
concept FitsText = std::convertible_to<G, const char *> || std::convertible_to<G, std::string_view> ||
    requires(const std::remove_cvref_t<G> &text)
{
    {
        *text
        } -> std::convertible_to<std::string_view>;
    {
        text.has_value()
        } -> std::same_as<bool>;
};

template <class G, class T>
concept FitsRecord = std::same_as<std::remove_cvref_t<G>, T> || std::same_as<std::decay_t<G>, T *>;

/// An argument that the operation fills.
template <class P>
struct Filled {
    Pointed<P> value{};

    explicit Filled(Nothing) {}
    P pass() { return &value; }
    auto take()
    {
        using Value = Pointed<P>;
        if constexpr (std::is_same_v<Value, struct _xmlNode *>) return std::tuple(Xml(value));
        else if constexpr (std::is_pointer_v<Value> && !std::is_same_v<Value, const char *>)
            return std::tuple(List<Pointed<Value>>(value));
        else return std::tuple(value);
    }
};

/// A number that the operation reads.
template <class P>
struct Number {
    P value;

    explicit Number(P number) : value(number) {}
    P pass() { return value; }
    std::tuple<> take() { return {}; }
};

/// A text that the operation reads.
struct Text {
    const char *value = nullptr;
    std::optional<std::string> copy{};

    template <class G>
    explicit Text(G &&given)
    {
        if constexpr (SaysNull<G>) value = nullptr;
        else if constexpr (std::is_convertible_v<G, const char *>) value = given;
        else if constexpr (std::is_convertible_v<G, std::string_view>) copy.emplace(std::string_view(given));
        else if (given.has_value()) copy.emplace(std::string_view(*given));
    }
    const char *pass() { return copy ? copy->c_str() : value; }
    std::tuple<> take() { return {}; }
    [[nodiscard]] bool cut_short() const { return copy && copy->find('\0') != std::string::npos; }
};

/// A record that the operation reads, and completes or not.
template <class T, bool Completed>
struct Copied {
    T value;

    explicit Copied(const T &given) : value(given) {}
    T *pass() { return &value; }
    auto take()
    {
        if constexpr (Completed) return std::tuple(value);
        else return std::tuple<>();
    }
};

/// A record of the caller's, completed in its place.
template <class T>
struct Pointer {
    T *value = nullptr;

    explicit Pointer(T *given) : value(given) {}
    explicit Pointer(std::nullptr_t) {}
    explicit Pointer(std::nullopt_t) {}
    T *pass() { return value; }
    std::tuple<> take() { return {}; }
};

/// Chooses how argument number I of an operation is passed, and says what is wrong with what was given for it.
template <auto Operation, size_t I, class G>
auto passed_as()
{
    using P = typename Signature<decltype(Operation)>::template Type<I>;
    constexpr Way way = described<Operation>.ways[I];
    if constexpr (way.direction == Direction::out) {
        return std::type_identity<Filled<P>>{};
    } else if constexpr (SaysNull<G>) {
        static_assert(way.optional, "qb::call: this argument of the operation must not be null");
        static_assert(std::is_pointer_v<P>, "qb::call: a number cannot be null");
        if constexpr (std::is_same_v<P, const char *>) return std::type_identity<Text>{};
        else return std::type_identity<Pointer<Pointed<P>>>{};
    } else if constexpr (std::is_integral_v<P>) {
        static_assert(FitsNumber<G, P>,
                      "qb::call: this argument is a number: int32_t, or uint64_t (write 5u) where the "
                      "operation takes that; a value that might not fit is not converted");
        return std::type_identity<Number<P>>{};
    } else if constexpr (std::is_same_v<P, const char *>) {
        static_assert(FitsText<G>,
                      "qb::call: this argument is a text: const char *, std::string, std::string_view or a "
                      "std::optional of one of them");
        return std::type_identity<Text>{};
    } else {
        static_assert(FitsRecord<G, Pointed<P>>,
                      "qb::call: this argument is a record of the operation's type, or a "
                      "pointer to one (a chain)");
        if constexpr (std::is_pointer_v<std::decay_t<G>>) return std::type_identity<Pointer<Pointed<P>>>{};
        else return std::type_identity<Copied<Pointed<P>, way.direction == Direction::inout>>{};
    }
}

/// What was given for argument number I.
template <auto Operation, size_t I, class... Given>
decltype(auto) given_for(std::tuple<Given...> &given)
{
    if constexpr (described<Operation>.ways[I].direction == Direction::out) return Nothing{};
    else return std::get<described<Operation>.given(I)>(std::move(given));
}

template <auto Operation, size_t I, class... Given>
using PassedAs =
    typename decltype(passed_as<Operation, I,
                                decltype(given_for<Operation, I>(std::declval<std::tuple<Given...> &>()))>())::type;

/// What the value that an operation returned tells, besides its outputs.
template <QbobjReturn Returns>
auto answer(uint32_t returned)
{
    if constexpr (Returns == QBOBJ_RETURNS_ID || Returns == QBOBJ_RETURNS_COUNT)
        return std::tuple(static_cast<int32_t>(returned));
    else if constexpr (Returns == QBOBJ_RETURNS_ANSWER) return std::tuple(returned == 0);
    else if constexpr (Returns == QBOBJ_RETURNS_TRUTH) return std::tuple(returned != 0);
    else return std::tuple<>();
}

inline constexpr uint32_t kMinusOne = 0xFFFFFFFF;

inline bool has_failed(QbobjReturn returns, uint32_t returned, const ErrorInfo &err)
{
    if (returns == QBOBJ_RETURNS_CODE) return returned != 0;
    if (returns == QBOBJ_RETURNS_TRUTH) return returned == 0 && err.code != 0;
    return returned == kMinusOne;
}

inline const char *meaning_of_nothing(QbobjReturn returns)
{
    switch (returns) {
        case QBOBJ_RETURNS_FOUND:
        case QBOBJ_RETURNS_ID: return "not found, or the look-up failed";
        default: return "an argument is malformed, or a statement failed";
    }
}

inline Error make_error(const Described &operation, sqlite3 *db, uint32_t returned, const ErrorInfo &err)
{
    Error error{.operation = operation.name};
    error.code = static_cast<int32_t>(err.code != 0 ? err.code : returned);
    const char *meaning = qbobj_code_meaning(static_cast<uint32_t>(error.code));
    if (meaning) error.meaning = meaning;
    else error.meaning = error.code < 0 ? meaning_of_nothing(operation.returns) : sqlite3_errstr(error.code);
    if (err.code != 0) {
        error.message = err.message ? err.message : "";
        error.file = err.file;
        error.line = err.line;
        return error;
    }
    constexpr int kPrimary = 0xFF;
    if (error.code > 0 && (sqlite3_errcode(db) & kPrimary) == error.code) error.message = sqlite3_errmsg(db);
    return error;
}

/// The outputs as the value of a Result: none, the one, or all as a tuple.
template <class... Out>
auto success(std::tuple<Out...> &&outputs)
{
    if constexpr (sizeof...(Out) == 0) return Result<void>();
    else if constexpr (sizeof...(Out) == 1) return Result<Out...>(std::get<0>(std::move(outputs)));
    else return Result<std::tuple<Out...>>(std::move(outputs));
}

/// Makes a call. `rolled_back` is what tells of a change that was not stored; null where nobody watches.
template <auto Operation, class... Given, size_t... I>
auto call(qbdb_t *qbdb, sqlite3 *db, bool *rolled_back, [[maybe_unused]] std::tuple<Given...> given,
          std::index_sequence<I...>)
{
    static constexpr const Described &operation = described<Operation>;
    std::tuple<PassedAs<Operation, I, Given...>...> arguments{
        PassedAs<Operation, I, Given...>(given_for<Operation, I>(given))...};
    using Outcome =
        decltype(success(std::tuple_cat(std::get<I>(arguments).take()..., answer<operation.returns>(uint32_t{}))));
    [[maybe_unused]] const auto cut_short = [](const auto &argument) {
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(argument)>, Text>) return argument.cut_short();
        else return false;
    };
    if ((false || ... || cut_short(std::get<I>(arguments)))) {
        constexpr uint32_t kMalformed = 8;
        return Outcome(Error{.code = kMalformed,
                             .meaning = qbobj_code_meaning(kMalformed),
                             .message = "a text holds a NUL character",
                             .operation = operation.name});
    }
    ErrorInfo err{};
    if (rolled_back) *rolled_back = false;
    const uint32_t returned = Operation(qbdb, db, std::get<I>(arguments).pass()..., &err);
    if (has_failed(operation.returns, returned, err)) return Outcome(make_error(operation, db, returned, err));
    if (rolled_back && *rolled_back && operation.changes && operation.returns == QBOBJ_RETURNS_CODE) {
        constexpr uint32_t kDatabase = 5;
        return Outcome(Error{.code = kDatabase,
                             .meaning = qbobj_code_meaning(kDatabase),
                             .message = "the change could not be stored; the database is as it was",
                             .operation = operation.name});
    }
    Outcome outcome = success(std::tuple_cat(std::get<I>(arguments).take()..., answer<operation.returns>(returned)));
    if (err.code == 0) return outcome;
    return std::move(outcome).with_warning(make_error(operation, db, returned, err));
}

/// Checks what can be said of the call as a whole, then makes it.
template <auto Operation, class... Given>
auto checked_call(qbdb_t *qbdb, sqlite3 *db, bool *rolled_back, Given &&...given)
{
    static constexpr const Described &operation = described<Operation>;
    static_assert(operation.name, "qb::call: this function is none of the library's operations");
    if constexpr (operation.name) {
        constexpr bool kAllGiven = sizeof...(Given) == operation.given(operation.count);
        static_assert(kAllGiven,
                      "qb::call: give a value for each argument that the operation reads, in their order; "
                      "what it only fills is not given, but returned");
        if constexpr (kAllGiven)
            return call<Operation>(qbdb, db, rolled_back, std::forward_as_tuple(std::forward<Given>(given)...),
                                   std::make_index_sequence<operation.count>{});
    }
}

}  // namespace detail

/// Calls an operation: `qb::call<qbobj_getUser>(db, User{.UserId = 100})`.
///
/// What is given are the arguments that the operation reads, in its order, without handle, connection and error record:
/// - numbers as numbers of the same signedness that fit;
/// - texts as `const char *`, `std::string`, `std::string_view` or a `std::optional` of them;
/// - records as records, which are copied, or as pointers: to the first of a chain, say;
/// - `nullptr` or `std::nullopt` where the argument may be null.
///
/// What comes back is what the operation fills: nothing (`Result<void>`), one value, or a `std::tuple` in the order of
/// the arguments. It is a number, a text (`const char *`, null when there is none), a record, a List, an Xml; of an
/// operation that returns an id or a count that number; of one that answers a question a bool. A record that is
/// completed comes back when it was given as a record; given as a pointer it is completed where it is.
///
/// Texts and lists of it live in the handle's pool.
/// @tparam Operation The exported function.
/// @param db    The database.
/// @param given What the operation reads.
/// @return The outputs, or the Error.
template <auto Operation, class... Given>
auto call(const Database &db, Given &&...given)
{
    detail::Handle &handle = db.get();
    return detail::checked_call<Operation>(handle.qbdb, handle.db, handle.trial ? nullptr : &handle.rolled_back,
                                           std::forward<Given>(given)...);
}

/// The same on a handle of the C interface, which stays the caller's. A commit that fails goes unnoticed, as in C.
template <auto Operation, class... Given>
auto call(qbdb_t *qbdb, sqlite3 *db, Given &&...given)
{
    return detail::checked_call<Operation>(qbdb, db, nullptr, std::forward<Given>(given)...);
}

}  // namespace v1
}  // namespace qb

// The records outlive what views them.
/// @cond
template <class T>
inline constexpr bool std::ranges::enable_borrowed_range<qb::List<T>> = true;
/// @endcond

#endif
/* SPDX-License-Identifier: Apache-2.0 */
