// Checking the file with a list of users to import.
#include <cerrno>
#include <cstring>

#include "accounts/directory_mode.h"
#include "accounts/groups.h"
#include "accounts/user_changes.h"
#include "accounts/workers.h"
#include "frame/list.h"
#include "frame/name_set.h"
#include "frame/text_file.h"

namespace qb {
namespace {

constexpr char kListFile[] = "/tmp/user_list.txt";
constexpr size_t kLineSize = 1024;      // a longer line is read in pieces, each a line of its own
constexpr long kMostBytes = 64L << 20;  // twice a full line for every possible id
constexpr int kFieldCount = 4;

enum Field { kName, kGroup, kEmail, kPassword };

/// State while the lines are read. The caller gets the lists only when every line has passed.
struct ListCheck {
    CallContext *ctx;
    int32_t ads = 0;
    bool hashed = false;  // the passwords are stored hashes
    NameSet known_users;
    NameSet known_groups;
    User *users = nullptr;
    Group *groups = nullptr;
    List<User> user_list{&users};
    List<Group> group_list{&groups};

    explicit ListCheck(CallContext *context) : ctx(context), known_users(context), known_groups(context) {}
};

uint32_t wrong_format(CallContext *ctx)
{
    return REPORT(ctx, 1, "User file wrong format");
}

void trim_line_end(char *line)
{
    size_t length = strlen(line);
    if (length > 0 && line[length - 1] == '\n') line[--length] = '\0';
    if (length > 0 && line[length - 1] == '\r') line[--length] = '\0';
}

/// Splits a line at its tabs, in place; fields may be empty. Returns the number of fields, of which the
/// first four are handed back.
int split(char *line, char *(&fields)[kFieldCount])
{
    int count = 0;
    for (char *at = line; at; count++) {
        char *tab = strchr(at, '\t');
        if (tab) *tab++ = '\0';
        if (count < kFieldCount) fields[count] = at;
        at = tab;
    }
    return count;
}

uint32_t read_mode(ListCheck *check, const char *word)
{
    if (strcmp(word, "export_list") == 0) check->hashed = true;
    else if (strcmp(word, "import_list") == 0) check->hashed = false;
    else if (*word) return wrong_format(check->ctx);
    return 0;
}

bool is_header(char *const (&fields)[kFieldCount])
{
    static constexpr const char *kHeader[kFieldCount] = {"User_Name", "Group_Name", "Email_Address", "Password"};
    for (int i = 0; i < kFieldCount; i++)
        if (strcmp(fields[i], kHeader[i]) != 0) return false;
    return true;
}

uint32_t check_user_fields(const ListCheck *check, char *const (&fields)[kFieldCount])
{
    CallContext *ctx = check->ctx;
    if (!*fields[kName]) return REPORT(ctx, 8, "UserName is required for 'add'");
    TRY(check_given_user_name(ctx, check->ads, fields[kName], kNewNameTooLong));
    if (!*fields[kGroup]) return REPORT(ctx, 8, "GroupName is required for 'add'");
    TRY(check_given_group_name(ctx, fields[kGroup]));
    return check_given_email(ctx, fields[kEmail]);
}

uint32_t append_group(ListCheck *check, const char *name)
{
    if (check->known_groups.contains(name)) return 0;
    Group *group = check->group_list.append(check->ctx);
    TRY_MEMORY(check->ctx);
    group->GroupName = name;
    check->known_groups.add(name);
    return 0;
}

uint32_t append_user(ListCheck *check, char *const (&fields)[kFieldCount], const char *password)
{
    User *user = check->user_list.append(check->ctx);
    TRY_MEMORY(check->ctx);
    user->UserName = fields[kName];
    user->GroupName = fields[kGroup];
    user->Email = fields[kEmail];
    user->Password = password;
    check->known_users.add(user->UserName);
    return 0;
}

uint32_t check_user_line(ListCheck *check, char *const (&fields)[kFieldCount])
{
    TRY(check_user_fields(check, fields));
    const char *password = fields[kPassword];
    if (!check->hashed) TRY(hash_given_password(check->ctx, fields[kPassword], &password));
    if (check->known_users.contains(fields[kName]))
        return REPORT(check->ctx, 801, "User (%s) already exists.", fields[kName]);
    TRY(append_group(check, fields[kGroup]));
    return append_user(check, fields, password);
}

uint32_t check_line(ListCheck *check, const char *text)
{
    // The fields end up in the records.
    char *line = noted(check->ctx, copy_text(pool_of(check->ctx->qbdb), text));
    TRY_MEMORY(check->ctx);
    char *fields[kFieldCount] = {};
    const int count = split(line, fields);
    if (count == 1) return read_mode(check, line);
    if (count != kFieldCount) return wrong_format(check->ctx);
    return is_header(fields) ? 0 : check_user_line(check, fields);
}

uint32_t check_lines(ListCheck *check, FILE *stream)
{
    char line[kLineSize];
    while (fgets(line, sizeof line, stream)) {
        if (ftell(stream) > kMostBytes) return REPORT(check->ctx, 1, "User file larger than %ld bytes", kMostBytes);
        trim_line_end(line);
        TRY(check_line(check, line));
    }
    // A read error: what was read so far is not the list.
    return ferror(stream) ? wrong_format(check->ctx) : 0;
}

}  // namespace

uint32_t x_qbobj_checkUserList(CallContext *ctx, sqlite3 *db, UserCollection *users, GroupCollection *groups,
                               UserCollection *existingUsers, GroupCollection *existingGroups)
{
    QB_ASSERT(users);
    QB_ASSERT(groups);
    ListCheck check(ctx);
    TRY(read_ads_mode(ctx, db, &check.ads));
    check.known_users.add_all(users->User, &User::UserName);
    check.known_groups.add_all(groups->Group, &Group::GroupName);
    if (existingUsers) check.known_users.add_all(existingUsers->User, &User::UserName);
    if (existingGroups) check.known_groups.add_all(existingGroups->Group, &Group::GroupName);
    TRY_MEMORY(ctx);
    const TextFile file = open_text_file(kListFile);
    if (!file && errno == ENOMEM) ctx->short_of_memory = true;
    TRY_MEMORY(ctx);
    if (!file) return errno == EINVAL ? wrong_format(ctx) : REPORT(ctx, 1, "User file not exist");
    TRY(check_lines(&check, file.get()));
    TRY_MEMORY(ctx);
    List<User>(&users->User).link(check.users);
    List<Group>(&groups->Group).link(check.groups);
    return 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
