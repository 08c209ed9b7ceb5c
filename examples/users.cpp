// Creates a user in a fresh appliance database and lists the users, with the C++ wrapper.
#include <cstdio>
#include <qbobj.hpp>

namespace {

qb::Result<User> add_user(const qb::Database &db, const char *name)
{
    auto user = qb::absent<User>();
    user.UserName = name;
    user.GroupName = "users";
    user.Password = "change me";
    return qb::call<qbobj_addUser>(db, user);
}

int fail(const qb::Error &error)
{
    std::fprintf(stderr, "%s\n", error.text().c_str());
    return 1;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: users FILE\n");
        return 2;
    }
    const auto db = qb::Database::open(argv[1], qb::Open::create, "tank");
    if (!db) return fail(db.error());

    const auto request = db->request();  // what is returned below goes away with it
    if (!request) return fail(request.error());
    if (const auto anna = add_user(*db, "anna"); !anna) return fail(anna.error());

    const auto again = add_user(*db, "anna");
    if (again || again.error().code != 801) return 1;
    std::printf("refused: %s (%s)\n", again.error().message.c_str(), again.error().meaning);

    const auto users = qb::call<qbobj_getUserCollection>(*db, nullptr, 0);
    if (!users) return fail(users.error());
    for (const User &user : qb::List(users->User)) std::printf("%d %s\n", user.UserId, user.UserName);

    const auto name =
        qb::call<qbobj_getUID>(*db, "anna").and_then([&](int32_t id) { return qb::call<qbobj_getUserName>(*db, id); });
    return qb::text(name.value_or("")) == "anna" ? 0 : 1;
}
// SPDX-License-Identifier: Apache-2.0
