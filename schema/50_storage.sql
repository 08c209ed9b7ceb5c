-- Storage: volumes, disks and enclosures with their health, the snapshot catalogue, iSCSI targets, spares, volume jobs.

-- One row per volume. lv_name 'USB' and 'media' stand for removable storage. No column may be called name or
-- migrate_to_volume_id: finishing a migration takes these two from the share inside a query on this table. A rowid
-- table: the row number is the volume's number in the list of backup targets. lv_name has no index: there are a handful
-- of volumes, and choosing a new volume for the home folders should meet the oldest one first.
CREATE TABLE _volume (
    id                  TEXT NOT NULL PRIMARY KEY,
    lv_name             TEXT,
    raid_type           TEXT,
    blk_total           INTEGER,
    blk_free            INTEGER,
    blk_size            INTEGER,
    volume_health       TEXT,
    sent_resilver_event INTEGER,
    sent_scan_end       INTEGER,
    keyfile             TEXT,
    balance_status      INTEGER,
    disk_test_status    INTEGER
);

-- One row per disk that is or was in a bay; the id is the device name. It must not be NULL: the search for pulled disks
-- asks which ids are not among the present ones, and one NULL among those would hide them all. channel, controller and
-- port are numbers, so that bays sort 1, 2, 10.
CREATE TABLE `$disk_info` (
    id                  TEXT NOT NULL PRIMARY KEY,
    present             INTEGER,
    model               TEXT,
    serial              TEXT,
    fw_version          TEXT,
    rpm                 INTEGER,
    sectors             INTEGER,
    capacity            INTEGER,
    controller          INTEGER,
    port                INTEGER,
    hwif                TEXT,
    volume_id           TEXT,
    pool_type           TEXT,
    pool_state          TEXT,
    pool_hostid         INTEGER,
    channel             INTEGER,
    replaced_with_spare INTEGER,
    is_signed_by_vxmr   INTEGER
);
CREATE INDEX idx_disk_info_controller_channel ON `$disk_info` (controller, channel);

-- One row per slot: which controller port leads to it. Not unique, a port may lead to several slots.
CREATE TABLE disk_port (
    controller INTEGER,
    port       INTEGER,
    slot_col   INTEGER,
    slot_row   INTEGER
);
CREATE INDEX idx_disk_port_controller_port ON disk_port (controller, port);

-- One row per enclosure; controller 0 is the main chassis. dead_slots is NULL where every slot is wired. The index is
-- not unique so that listings together with jbod_port start here and keep the order of the enclosures.
CREATE TABLE _disk_enclosure (
    controller      INTEGER,
    name            TEXT,
    nr_row          INTEGER,
    nr_column       INTEGER,
    disk_horizontal INTEGER,
    ses_device      TEXT,
    dead_slots      TEXT,
    nr_cpu          INTEGER,
    nr_fan          INTEGER,
    nr_psu          INTEGER,
    nr_volt         INTEGER
);
CREATE INDEX idx_disk_enclosure_controller ON _disk_enclosure (controller);

-- One row per external connector of an enclosure. An enclosure may have none or several.
CREATE TABLE jbod_port (
    controller INTEGER,
    label      TEXT
);
CREATE INDEX idx_jbod_port_controller_label ON jbod_port (controller, label);

-- One row per disk: its last health report. zpool_state is NULL while no pool has spoken about the disk.
CREATE TABLE _disk_health (
    disk_id               TEXT NOT NULL PRIMARY KEY,
    ata_errors            INTEGER,
    realloc_sect          INTEGER,
    realloc_event         INTEGER,
    spin_retry_cnt        INTEGER,
    ioedc                 INTEGER,
    cmd_timeouts          INTEGER,
    pending_sect          INTEGER,
    uncorrectable_err     INTEGER,
    temp                  INTEGER,
    start_stop_cnt        INTEGER,
    power_on_hrs          INTEGER,
    power_cycle_cnt       INTEGER,
    load_cycle_cnt        INTEGER,
    zpool_state           TEXT,
    zpool_read_error_cnt  INTEGER,
    zpool_write_error_cnt INTEGER,
    zpool_cksum_error_cnt INTEGER
);

-- One row per sensor: its last value and the three before. The key lets a reading be an INSERT OR IGNORE of the first
-- value followed by an UPDATE that shifts the history.
CREATE TABLE _enclosure_health (
    controller  INTEGER NOT NULL,
    name        TEXT NOT NULL,
    devid       TEXT NOT NULL,
    value       INTEGER,
    value_prev1 INTEGER,
    value_prev2 INTEGER,
    value_prev3 INTEGER,
    PRIMARY KEY (controller, name, devid)
);

-- One row per sensor that the model has, with its limits; a limit may be missing.
CREATE TABLE enclosure_health_spec (
    controller INTEGER NOT NULL,
    name       TEXT NOT NULL,
    devid      TEXT NOT NULL,
    min        INTEGER,
    max        INTEGER,
    label      TEXT,
    PRIMARY KEY (controller, name, devid)
);

-- One row per power supply unit: its last report, all text as the monitor prints it.
CREATE TABLE _ups_health (
    name            TEXT NOT NULL,
    host            TEXT NOT NULL,
    ups_status      TEXT,
    ups_alarm       TEXT,
    battery_charge  TEXT,
    battery_runtime TEXT,
    battery_voltage TEXT,
    PRIMARY KEY (name, host)
);

-- One row per snapshot of a share, known by the share's dataset. dataset and name are NOT NULL, so that a snapshot of
-- an unknown share is refused. Nothing is unique but the number: snapshots are catalogued as they were taken.
CREATE TABLE `$snapshot` (
    id         INTEGER PRIMARY KEY,
    zfs_name   TEXT NOT NULL,
    name       TEXT NOT NULL,
    type       INTEGER,
    created_on INTEGER
);
-- Reading a share counts its snapshots by type and asks for the first and the last; listing pages by time.
CREATE INDEX idx_snapshot_zfs_name_type ON `$snapshot` (zfs_name, type);
CREATE INDEX idx_snapshot_zfs_name_created_on ON `$snapshot` (zfs_name, created_on);
CREATE INDEX idx_snapshot_created_on ON `$snapshot` (created_on);

-- One row per snapshot of a home folder, known by the user's name and home directory.
CREATE TABLE `$home_folder_snapshot` (
    id         INTEGER PRIMARY KEY,
    user_name  TEXT NOT NULL,
    home_dir   TEXT NOT NULL,
    name       TEXT NOT NULL,
    type       INTEGER,
    created_on INTEGER
);
CREATE INDEX idx_home_folder_snapshot_user_name ON `$home_folder_snapshot` (user_name);
CREATE INDEX idx_home_folder_snapshot_home_dir_created_on ON `$home_folder_snapshot` (home_dir, created_on);
CREATE INDEX idx_home_folder_snapshot_created_on ON `$home_folder_snapshot` (created_on);

-- The one row (share 0) that says when snapshots of all home folders are taken. The share is the key so that the row
-- can be replaced, or made when it is missing.
CREATE TABLE `$home_folder_snapshot_schedule` (
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

-- One row per clone. In spite of the column names the clone and its parent are known by the names of their shares.
CREATE TABLE `$snapshot_clones` (
    id                   INTEGER PRIMARY KEY,
    cloned_zfs_name      TEXT,
    parent_snapshot_name TEXT,
    parent_zfs_name      TEXT
);
CREATE INDEX idx_snapshot_clones_cloned_zfs_name ON `$snapshot_clones` (cloned_zfs_name);
CREATE INDEX idx_snapshot_clones_parent_zfs_name ON `$snapshot_clones` (parent_zfs_name);
CREATE INDEX idx_snapshot_clones_parent_snapshot_name ON `$snapshot_clones` (parent_snapshot_name);

-- The iSCSI tables are known by name. Callers also keep the row number as the numeric id, and the id column pins it:
-- row numbers that no column names may change when the database is compacted.

-- One row per group of LUNs, which is one iSCSI target.
CREATE TABLE `$iscsi_lun_group` (
    id          INTEGER PRIMARY KEY,
    name        TEXT NOT NULL UNIQUE,
    target      TEXT,
    all_hosts   INTEGER,
    chap_auth   INTEGER,
    chap_secret TEXT
);

-- One row per LUN.
CREATE TABLE `$iscsi_lun` (
    id        INTEGER PRIMARY KEY,
    name      TEXT NOT NULL UNIQUE,
    lun_group TEXT,
    lun_n     INTEGER
);

-- One row per initiator.
CREATE TABLE `$iscsi_initiator` (
    id          INTEGER PRIMARY KEY,
    name        TEXT NOT NULL UNIQUE,
    chap_auth   INTEGER,
    chap_secret TEXT
);

-- One row per initiator that a LUN group admits. Exactly these two columns in this order: rows are inserted without
-- naming columns. No key: an initiator may be added twice, and readers list it once.
CREATE TABLE `$iscsi_lun_group_access` (
    lun_group TEXT,
    initiator TEXT
);
CREATE INDEX idx_iscsi_lun_group_access_lun_group ON `$iscsi_lun_group_access` (lun_group);
CREATE INDEX idx_iscsi_lun_group_access_initiator ON `$iscsi_lun_group_access` (initiator);

-- One row per disk set aside as a spare for the volumes.
CREATE TABLE `$volume_spares` (
    disk_info_id TEXT NOT NULL PRIMARY KEY
);

-- One row per maintenance job of a volume. The job number is not a key: the writer refuses a number in use, but job 0
-- counts as never used and may be there more than once.
CREATE TABLE volume_schedule (
    job_id     INTEGER,
    volume_id  TEXT,
    enabled    INTEGER,
    action     INTEGER,
    minute     TEXT,
    hour       TEXT,
    dayofmonth TEXT,
    month      TEXT,
    dayofweek  TEXT
);
CREATE INDEX idx_volume_schedule_job_id ON volume_schedule (job_id);
CREATE INDEX idx_volume_schedule_volume_id ON volume_schedule (volume_id);
-- SPDX-License-Identifier: Apache-2.0
