-- Shares: the shared folders and block volumes, their options per protocol, access lists, schedules and measurements.
--
-- Copying a share duplicates its rows column by column (SELECT * and INSERT) after replacing share_id. The option,
-- list, quota and schedule tables therefore have no row number of their own, and their keys contain share_id.

-- One row per share. zfs_name is the dataset. It is unique and NOT NULL, so that a share on an unknown volume, whose
-- dataset name cannot be formed, is refused. The name is unique without regard to case because SMB clients cannot tell
-- such names apart. migrate_to_volume_id is set while the share moves to another volume.
CREATE TABLE share (
    id                   INTEGER PRIMARY KEY,
    name                 TEXT NOT NULL COLLATE NOCASE UNIQUE,
    zfs_name             TEXT NOT NULL UNIQUE,
    type                 TEXT,
    comment              TEXT,
    path                 TEXT,
    volume_id            TEXT,
    usb_storage_id       INTEGER,
    visible_snapdir      TEXT,
    user_id              INTEGER,
    group_id             INTEGER,
    user_access          INTEGER,
    group_access         INTEGER,
    everyone_access      INTEGER,
    non_owner_delete     INTEGER,
    migrate_to_volume_id TEXT,
    update_ts            TEXT DEFAULT CURRENT_TIMESTAMP
);
CREATE INDEX idx_share_path ON share (path);
CREATE INDEX idx_share_volume_id ON share (volume_id);
CREATE INDEX idx_share_migrate_to_volume_id ON share (migrate_to_volume_id) WHERE migrate_to_volume_id IS NOT NULL;

-- One row per share: the dataset's attributes.
CREATE TABLE zfs_attr (
    share_id           INTEGER PRIMARY KEY,
    mb_quota           INTEGER,
    mb_reservation     INTEGER,
    mb_refquota        INTEGER,
    mb_refreservation  INTEGER,
    compression        INTEGER,
    bit_rot_protection INTEGER,
    dedup              INTEGER,
    logbias            TEXT,
    sync               TEXT,
    origin             TEXT
);

-- One row per share: the dataset's use in bytes, as last measured. The compression ratio is kept as the tool prints it.
CREATE TABLE _zfs_stat (
    share_id             INTEGER PRIMARY KEY,
    available            INTEGER,
    used                 INTEGER,
    usedbychildren       INTEGER,
    usedbydataset        INTEGER,
    usedbyrefreservation INTEGER,
    usedbysnapshots      INTEGER,
    referenced           INTEGER,
    compressratio        TEXT
);

-- The option tables hold one row per share that has the protocol. The share is the key: readers join on it, and
-- changing a share first makes a missing row with INSERT OR IGNORE. Such rows give only a few columns; available is
-- then NULL, which counts as off until it is written.
CREATE TABLE cifs_share_option (
    share_id                     INTEGER PRIMARY KEY,
    cifs_access                  TEXT,
    cifs_guest_access            INTEGER,
    cifs_hide_share              INTEGER,
    cifs_group_create_mask       INTEGER,
    cifs_everyone_create_mask    INTEGER,
    cifs_enable_masks            INTEGER,
    cifs_group_directory_mask    INTEGER,
    cifs_everyone_directory_mask INTEGER,
    cifs_enable_forced_minimum   INTEGER,
    cifs_recycle                 INTEGER,
    cifs_recycle_mb_limit        INTEGER,
    cifs_recycle_age_limit       INTEGER,
    oplocks                      INTEGER,
    available                    INTEGER,
    cifs_enabledfs               INTEGER
);

-- One row per DFS link of a share. A share may have any number of them, also equal ones: no key.
CREATE TABLE cifs_dfs_option (
    share_id     INTEGER NOT NULL,
    volume       TEXT,
    share        TEXT,
    folder       TEXT,
    address      TEXT,
    remote_share TEXT
);
CREATE INDEX idx_cifs_dfs_option_share_id ON cifs_dfs_option (share_id);

-- AFP. NULL masks mean that new files keep the permissions their creator gives them.
CREATE TABLE afp_share_option (
    share_id         INTEGER PRIMARY KEY,
    available        INTEGER,
    afp_access       TEXT,
    afp_guest_access INTEGER,
    afp_fperm        INTEGER,
    afp_dperm        INTEGER
);

-- NFS.
CREATE TABLE nfs_share_option (
    share_id   INTEGER PRIMARY KEY,
    available  INTEGER,
    nfs_access TEXT,
    nfs_sync   INTEGER
);

-- FTP. Exactly these six columns in this order: a missing row is made by an INSERT that names no columns.
CREATE TABLE ftp_share_option (
    share_id           INTEGER PRIMARY KEY,
    available          INTEGER,
    ftp_access         TEXT,
    ftp_mask           INTEGER,
    ftp_create_mask    INTEGER,
    ftp_directory_mask INTEGER
);

-- HTTP.
CREATE TABLE http_share_option (
    share_id    INTEGER PRIMARY KEY,
    available   INTEGER,
    http_access TEXT,
    http_webdav INTEGER
);

-- Rsync; passwordprotection is 'enabled' or anything else.
CREATE TABLE rsync_share_option (
    share_id           INTEGER PRIMARY KEY,
    available          INTEGER,
    rsync_access       TEXT,
    passwordprotection TEXT
);

-- DLNA. The access column has no prefix here.
CREATE TABLE dlna_share_option (
    share_id   INTEGER PRIMARY KEY,
    available  INTEGER,
    access     TEXT,
    media_type INTEGER
);

-- DAAP.
CREATE TABLE daap_share_option (
    share_id  INTEGER PRIMARY KEY,
    available INTEGER
);

-- One row per block volume.
CREATE TABLE zvol_share_option (
    share_id  INTEGER PRIMARY KEY,
    kb_size   INTEGER,
    is_sparse INTEGER
);

-- One row per host name or network that an access list ever named. Rows are never removed.
CREATE TABLE host (
    id   INTEGER PRIMARY KEY,
    name TEXT NOT NULL UNIQUE
);

-- The access lists: one row per share, protocol and host, user or group. The lists of one share and protocol are read
-- and replaced together, so these two lead the key.
CREATE TABLE host_acl (
    share_id INTEGER NOT NULL,
    host_id  INTEGER NOT NULL,
    proto    TEXT NOT NULL,
    read     INTEGER,
    write    INTEGER,
    root     INTEGER,
    PRIMARY KEY (share_id, proto, host_id)
);

CREATE TABLE user_acl (
    share_id INTEGER NOT NULL,
    user_id  INTEGER NOT NULL,
    proto    TEXT NOT NULL,
    read     INTEGER,
    write    INTEGER,
    PRIMARY KEY (share_id, proto, user_id)
);
CREATE INDEX idx_user_acl_user_id ON user_acl (user_id);

CREATE TABLE group_acl (
    share_id INTEGER NOT NULL,
    group_id INTEGER NOT NULL,
    proto    TEXT NOT NULL,
    read     INTEGER,
    write    INTEGER,
    PRIMARY KEY (share_id, proto, group_id)
);

-- One row per rsync user of a share; these are not accounts of the appliance. The password is kept as given because
-- the rsync server needs it in clear.
CREATE TABLE rsync_user_password_acl (
    share_id INTEGER NOT NULL,
    user     TEXT NOT NULL,
    password TEXT,
    PRIMARY KEY (share_id, user)
);

-- One row per share: when its snapshots are taken, in the manner of crontab.
CREATE TABLE snapshot_schedule (
    share_id              INTEGER PRIMARY KEY,
    enabled               INTEGER,
    minute                TEXT,
    hour                  TEXT,
    day_of_month          TEXT,
    day_of_week           TEXT,
    month                 TEXT,
    last_taken            INTEGER,
    purge_manual_snapshot INTEGER,
    last_daily_taken      INTEGER,
    last_weekly_taken     INTEGER
);

-- One row per share and retention rule; share 0 stands for the home folders. The other columns are the share's policy
-- and are the same in all its rows. schedule is a text of 255 digits.
CREATE TABLE snapshot_management (
    share_id           INTEGER NOT NULL,
    enabled            INTEGER,
    retention_rule     INTEGER,
    lifetime           INTEGER,
    number             INTEGER,
    schedule           TEXT,
    nonempty_snapshots INTEGER,
    prev_versions      INTEGER,
    UNIQUE (share_id, retention_rule)
);

-- One row per process that holds a share. share_id is NOT NULL so that a holder of an unknown dataset is refused.
CREATE TABLE process_on_share (
    share_id INTEGER NOT NULL,
    pid      INTEGER NOT NULL,
    blocking INTEGER,
    ts       TEXT DEFAULT CURRENT_TIMESTAMP,
    PRIMARY KEY (share_id, pid)
);

-- One row per dataset and application that uses it. Named by dataset, so it has to follow renames and migrations.
CREATE TABLE `$application_on_share` (
    zfs_name TEXT NOT NULL,
    app_name TEXT NOT NULL,
    app_data TEXT,
    PRIMARY KEY (zfs_name, app_name)
);
CREATE INDEX idx_application_on_share_app_name ON `$application_on_share` (app_name);
-- SPDX-License-Identifier: Apache-2.0
