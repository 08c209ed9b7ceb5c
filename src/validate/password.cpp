#include "validate/password.h"

#include <crypt.h>

#include <cstring>

#include "frame/pool.h"

namespace qb {
namespace {

// Lower case first, unlike crypt's own alphabet: what the salts of this appliance look like.
constexpr char kAlphabet[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789./";
static_assert(sizeof kAlphabet == 64 + 1);

void append_salt(char *out, uint32_t random)
{
    for (int i = 0; i < 4; i++) out[i] = kAlphabet[random >> (6 * i) & 63];
}

/// crypt with a work area of its own, wiped afterwards; the result lives in the call's pool.
const char *run_crypt(CallContext *ctx, const char *password, const char *setting)
{
    crypt_data area{};  // on the stack: a list of users would fill the pool with these
    const char *hash = crypt_r(password, setting, &area);
    // libcrypt answers with a text that begins with '*' when it cannot hash.
    const char *copy = hash && hash[0] != '*' ? copy_text(ctx, hash) : nullptr;
    explicit_bzero(&area, sizeof area);
    return copy;
}

}  // namespace

const char *hash_password(CallContext *ctx, const char *password)
{
    if (!is_set(password)) return "";
    char setting[] = "$1$........$";
    append_salt(setting + 3, qbdb_rand());
    append_salt(setting + 7, qbdb_rand());
    return run_crypt(ctx, password, setting);
}

int32_t check_password(CallContext *ctx, const char *password, const char **hash)
{
    *hash = password ? hash_password(ctx, password) : nullptr;
    return *hash ? 0 : 1;
}

bool verify_password(CallContext *ctx, const char *password, const char *hash)
{
    if (!is_set(hash)) return false;
    const char *again = run_crypt(ctx, password, hash);
    return again && strcmp(again, hash) == 0;
}

}  // namespace qb
// SPDX-License-Identifier: Apache-2.0
