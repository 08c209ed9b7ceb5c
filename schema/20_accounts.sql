-- Accounts: users, groups, what hangs on them, and the settings for new accounts and for the directory import.

-- One row per user, imported domain users included (rid set; their ids may be negative). is_privileged is 1 for system
-- accounts, 0 for ordinary ones and -1 for removed ones: a removed user keeps its row, so that neither its name nor its
-- id is given to somebody else. The name is unique over all of them and compared with case, as Unix does.
-- group_id may be NULL: assigning the primary group by an unknown name leaves the user without one. home must never be
-- the empty string, under which every path would lie; accounts without a home have NULL. last_changed counts days.
CREATE TABLE `$user` (
    id            INTEGER PRIMARY KEY,
    uname         TEXT NOT NULL UNIQUE,
    passwd        TEXT,
    email         TEXT,
    home          TEXT,
    group_id      INTEGER,
    shell         TEXT,
    is_privileged INTEGER DEFAULT 0,
    last_changed  INTEGER,
    is_locked     INTEGER DEFAULT 0,
    shell_access  INTEGER DEFAULT 0,
    fullname      TEXT,
    rid           INTEGER
);
CREATE INDEX idx_user_group_id ON `$user` (group_id);
CREATE INDEX idx_user_home ON `$user` (home);
-- The users that the list shows, in its order. The conditions are those of the list, word for word, so that a page is
-- counted and skipped in the index alone.
CREATE INDEX idx_user_listed ON `$user` (uname, group_id, is_privileged, rid)
    WHERE is_privileged=0 AND group_id<>98 AND rid IS NULL AND uname<>'nobody' AND uname<>'guest';

-- One row per group; is_privileged and rid as for users, removed groups keep their row and name.
CREATE TABLE `$group` (
    id            INTEGER PRIMARY KEY,
    gname         TEXT NOT NULL UNIQUE,
    is_privileged INTEGER DEFAULT 0,
    rid           INTEGER
);

-- One row per secondary membership. The primary group of a user is not repeated here.
CREATE TABLE `$group_has_user` (
    user_id  INTEGER NOT NULL,
    group_id INTEGER NOT NULL,
    PRIMARY KEY (user_id, group_id)
);
CREATE INDEX idx_group_has_user_group_id ON `$group_has_user` (group_id);

-- One row per user: settings of the home folder. visible_snapdir is empty when the snapshot folder is hidden.
CREATE TABLE `$home_folder` (
    user_id                     INTEGER PRIMARY KEY,
    snapshot_protection_enabled INTEGER,
    quota                       INTEGER,
    visible_snapdir             TEXT,
    prev_versions               INTEGER
);

-- One row per user: bytes that the home folder uses, as last measured.
CREATE TABLE `_hf_zfs_stat` (
    user_id INTEGER PRIMARY KEY,
    used    INTEGER
);

-- One row per user with a Time Machine allowance; the shared target is the row of user 96.
CREATE TABLE `$timemachine_quota` (
    user_id     INTEGER PRIMARY KEY,
    enabled     INTEGER,
    capacity_mb INTEGER
);

-- One row per user and share. A quota for an unknown share is refused (NOT NULL): it would be stored and never listed.
CREATE TABLE user_quota (
    user_id  INTEGER NOT NULL,
    share_id INTEGER NOT NULL,
    mb_soft  INTEGER,
    mb_hard  INTEGER,
    PRIMARY KEY (user_id, share_id)
);
CREATE INDEX idx_user_quota_share_id ON user_quota (share_id);

-- One row per group and share.
CREATE TABLE group_quota (
    group_id INTEGER NOT NULL,
    share_id INTEGER NOT NULL,
    mb_soft  INTEGER,
    mb_hard  INTEGER,
    PRIMARY KEY (group_id, share_id)
);
CREATE INDEX idx_group_quota_share_id ON group_quota (share_id);

-- One row per share and user: megabytes in use, as last measured.
CREATE TABLE _user_quota_stat (
    share_id INTEGER NOT NULL,
    user_id  INTEGER NOT NULL,
    mb_used  INTEGER,
    PRIMARY KEY (share_id, user_id)
);
CREATE INDEX idx_user_quota_stat_user_id ON _user_quota_stat (user_id);

-- One row per share and group: megabytes in use, as last measured.
CREATE TABLE _group_quota_stat (
    share_id INTEGER NOT NULL,
    group_id INTEGER NOT NULL,
    mb_used  INTEGER,
    PRIMARY KEY (share_id, group_id)
);
CREATE INDEX idx_group_quota_stat_group_id ON _group_quota_stat (group_id);

-- One row per public key of a user. Each key of the administrator has a twin of user 0 with the same key text, so the
-- key text alone is not unique.
CREATE TABLE ssh_public_key (
    id          INTEGER PRIMARY KEY,
    user_id     INTEGER NOT NULL,
    serve_for   TEXT,
    type        TEXT,
    key         TEXT,
    comment     TEXT,
    fingerprint TEXT,
    title       TEXT
);
CREATE INDEX idx_ssh_public_key_user_id_key ON ssh_public_key (user_id, key);

-- One row per second name under which SMB clients reach a local account. No unique key: the same mapping may be stored
-- twice, and a name may have one row per type.
CREATE TABLE smb_username_map (
    id         INTEGER PRIMARY KEY,
    unix_uname TEXT,
    smb_uname  TEXT,
    type       TEXT
);
CREATE INDEX idx_smb_username_map_unix_uname ON smb_username_map (unix_uname);
CREATE INDEX idx_smb_username_map_smb_uname ON smb_username_map (smb_uname);

-- The one row of defaults for new accounts. next_uid is where the search for a free user id begins; group_membership is
-- the name of the default group and group_id its id; private_time_machine_space counts units of 1000 megabytes.
CREATE TABLE account_default (
    home_volume_id             TEXT,
    diskquota_warn             INTEGER,
    group_id                   INTEGER,
    disallow_password_change   INTEGER,
    home_folder_capacity_limit INTEGER,
    group_membership           TEXT,
    private_time_machine       INTEGER,
    private_time_machine_space INTEGER,
    snapshot_protection        INTEGER,
    next_uid                   INTEGER
);

-- The one row that says how the administrator may recover a lost password.
CREATE TABLE passwordrecovery (
    question TEXT,
    answer   TEXT,
    email    TEXT,
    enabled  INTEGER,
    method   TEXT
);

-- The one row in which the directory importer reports its progress: state 0 idle, 1 running, 2 complete, else an error.
CREATE TABLE _ads_importer (
    state       INTEGER,
    total_user  INTEGER,
    curr_user   INTEGER,
    total_group INTEGER,
    curr_group  INTEGER,
    start_at    INTEGER,
    done_at     INTEGER
);
-- SPDX-License-Identifier: Apache-2.0
