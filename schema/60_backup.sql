-- Backup: jobs, the list that the front-panel button starts, and what jobs can name as a side.

-- One row per backup job. The name is not unique here: jobs are added with INSERT OR REPLACE, and a unique name would
-- make the new job silently take the place of the old one instead of being refused. AUTOINCREMENT, because the button
-- list may still name a job that went away with its share; a new job must not inherit that entry.
CREATE TABLE backup (
    id                            INTEGER PRIMARY KEY AUTOINCREMENT,
    name                          TEXT,
    enabled                       INTEGER,
    src_type                      TEXT,
    src_share_proto               TEXT,
    src_path                      TEXT,
    src_login                     TEXT,
    src_password                  TEXT,
    src_port                      INTEGER,
    src_eject                     INTEGER,
    dst_type                      TEXT,
    dst_share_proto               TEXT,
    dst_path                      TEXT,
    dst_login                     TEXT,
    dst_password                  TEXT,
    dst_port                      INTEGER,
    dst_eject                     INTEGER,
    sch_every                     INTEGER,
    sch_start                     INTEGER,
    sch_end                       INTEGER,
    sch_dow                       INTEGER,
    opt_full_backup_freq          TEXT,
    opt_remove_previous_backup    INTEGER,
    opt_chown_to_share_owner      INTEGER,
    opt_rsync_options             INTEGER,
    opt_rsync_exclude             TEXT,
    opt_email_this_to_alert_email INTEGER,
    opt_misc_option               INTEGER,
    wol_addr                      TEXT
);
CREATE INDEX idx_backup_name ON backup (name);
CREATE INDEX idx_backup_src_share_proto ON backup (src_share_proto);
CREATE INDEX idx_backup_dst_share_proto ON backup (dst_share_proto);

-- One row per job that the backup button starts, in the order of `order` (1, 2, 3 ...). A job may be listed twice.
CREATE TABLE backup_button_jobs (
    `order`   INTEGER,
    backup_id INTEGER
);
CREATE INDEX idx_backup_button_jobs_order ON backup_button_jobs (`order`);
CREATE INDEX idx_backup_button_jobs_backup_id ON backup_button_jobs (backup_id);

-- One row per protocol to a remote server; a read-only one can be a source but not a destination.
CREATE TABLE backup_protocol (
    id       INTEGER PRIMARY KEY,
    proto    TEXT NOT NULL UNIQUE,
    readonly INTEGER
);

-- One row per USB connector of the appliance. A connector with a second controller behind it has an alt_port.
CREATE TABLE usb_port (
    id       INTEGER PRIMARY KEY,
    descr    TEXT,
    port     TEXT,
    alt_port TEXT
);

-- One row per attached USB storage device: where it is plugged in and where it is mounted.
CREATE TABLE usb_storage (
    id          INTEGER PRIMARY KEY,
    usbpath     TEXT,
    mount_point TEXT
);
-- SPDX-License-Identifier: Apache-2.0
