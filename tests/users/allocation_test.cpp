// Every allocation of every operation fails once: nobody may miss it.
#include <apr_strings.h>
#include <dlfcn.h>

#include <cstdarg>

#include "users/allocations.h"
#include "users/users.h"

size_t test::pool_bytes = 0;

namespace {

int left = 0;  // allocations until the one that fails; 0 lets all succeed

/// Counts an allocation; true when it is the one to fail.
bool fails(size_t size)
{
    test::pool_bytes += (size + 7) / 8 * 8;
    return left > 0 && --left == 0;
}

/// The pool library's own function of a name.
template <class Function>
Function own(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// These stand before the pool library's own for the whole program.
extern "C" void *apr_palloc(apr_pool_t *pool, apr_size_t size)
{
    static const auto allocate = own<decltype(&apr_palloc)>("apr_palloc");
    return fails(size) ? nullptr : allocate(pool, size);
}

extern "C" char *apr_pstrdup(apr_pool_t *pool, const char *text)
{
    static const auto copy = own<decltype(&apr_pstrdup)>("apr_pstrdup");
    return fails(strlen(text) + 1) ? nullptr : copy(pool, text);
}

extern "C" char *apr_psprintf(apr_pool_t *pool, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    char *text = apr_pvsprintf(pool, format, args);
    va_end(args);
    return fails(strlen(text) + 1) ? nullptr : text;
}

using namespace test;

namespace {

struct Allocations : Users {
    int32_t allocated = 0;

    Allocations()
    {
        sql("INSERT INTO share (id,name,zfs_name) VALUES(1,'media','tank/media')");
        for (const char *name : {"anna", "bob"}) {
            const int32_t id = name[0] == 'a' ? 100 : 101;
            const std::string number = std::to_string(id);
            add_user(id, name, "99",
                     "fullname='Full',email='a@example.com',home='/home',passwd='$1$hash',is_locked=1,shell_access=1");
            sql("INSERT INTO `$home_folder` VALUES(" + number + ",1,5,'snap',1);" +
                "INSERT INTO `$timemachine_quota` VALUES(" + number + ",1,7);" +
                "INSERT INTO user_quota (user_id,share_id,mb_hard) VALUES(" + number + ",1,9)");
        }
        add_user(200, "cloud", "98");
    }

    /// Lets the n-th allocation fail, for each n, until a call needs no more than n. Each failure has to show.
    template <class Call>
    void expect_each_noticed(Call call, uint32_t code, const char *message)
    {
        for (int n = 1; n < 200; n++) {
            left = n;
            const uint32_t rc = call();
            const bool failed = left == 0;
            left = 0;
            if (!failed) {
                EXPECT_EQ(rc, 0u) << text(err.message);
                EXPECT_GT(n, 1) << "the operation allocates nothing";
                return;
            }
            EXPECT_EQ(rc, code) << "allocation " << n;
            EXPECT_EQ(text(err.message), text(message)) << "allocation " << n;
        }
        ADD_FAILURE() << "does not come to an end";
    }
};

constexpr char kMessage[] = "Failed to allocate resource.";

TEST_F(Allocations, List)
{
    for (const int32_t with_password : {0, 1})
        expect_each_noticed(
            [&] {
                users = {};
                return qbobj_getUserCollection(qbdb, db, &users, nullptr, with_password, &err);
            },
            2, kMessage);
    EXPECT_THAT(names(), ElementsAre("anna", "bob"));
}

TEST_F(Allocations, OneUser)
{
    expect_each_noticed(
        [&] {
            user = {};
            user.resource_id = 100;
            return qbobj_getUser(qbdb, db, &user, &err);
        },
        2, kMessage);
}

TEST_F(Allocations, Names)
{
    expect_each_noticed([&] { return qbobj_getCloudUser(qbdb, db, &users, &err); }, 2, kMessage);
    expect_each_noticed([&] { return qbobj_getUserInGroupName(qbdb, db, "users", 0, &users, &err); }, 2, kMessage);
    const char *name = nullptr;
    for (const int32_t id : {98, 555})
        expect_each_noticed([&] { return qbobj_getUserName(qbdb, db, id, &name, &err); }, 0xFFFFFFFF, nullptr);
    SystemUser account{};
    account.UserId = 98;
    expect_each_noticed([&] { return qbobj_getSystemUser(qbdb, db, &account, &err); }, 5,
                        "Failed DB Query for 'SELECT FROM user'. out of memory");
}

}  // namespace
