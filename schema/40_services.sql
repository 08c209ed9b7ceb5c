-- Services: one table with one row per network service, and the side tables of the TiVo and Coffer services.
--
-- The rows are only ever updated, without a WHERE clause: a missing row would lose every write. No column of a service
-- is NOT NULL, because any of them may be the mirror of a named setting that is cleared.

-- Windows file sharing, with the directory (domain) membership. security is 'user' or 'ads'.
CREATE TABLE service_cifs (
    enabled                              INTEGER,
    user_home_directory                  INTEGER,
    user_home_directory_recycle          INTEGER,
    user_home_directory_recycle_max_days INTEGER,
    user_home_directory_recycle_max_size INTEGER,
    security                             TEXT,
    workgroup                            TEXT,
    realm                                TEXT,
    orgunit                              TEXT,
    restrict_ou                          TEXT,
    no_sync_ads                          INTEGER,
    domain_admin_user                    TEXT,
    password_server                      TEXT,
    allow_trusted_domains                INTEGER,
    domain_sid                           TEXT,
    domain_admin_gid                     INTEGER,
    domain_admin_uid                     INTEGER,
    join_ads_failed                      INTEGER,
    idmap_backend                        TEXT
);

-- Apple file sharing, which also carries Time Machine.
CREATE TABLE service_afp (
    enabled             INTEGER,
    user_home_directory INTEGER
);

-- NFS; domain is the id-mapping domain of version 4, NULL for the host's own.
CREATE TABLE service_nfs (
    enabled             INTEGER,
    threads             INTEGER,
    user_home_directory INTEGER,
    nfsv4               INTEGER,
    domain              TEXT
);

-- FTP; auth_mode is 'user' or 'anonymous', rates are in kilobytes per second, 0 for no limit.
CREATE TABLE service_ftp (
    enabled             INTEGER,
    port                INTEGER,
    auth_mode           TEXT,
    passive_range_min   INTEGER,
    passive_range_max   INTEGER,
    enable_masquerade   INTEGER,
    masquerade          TEXT,
    upload_resume       INTEGER,
    user_home_directory INTEGER,
    ftps                INTEGER,
    force_ftps          INTEGER,
    server_transfer_log INTEGER,
    max_upload_rate     INTEGER,
    max_download_rate   INTEGER
);

-- Music streaming.
CREATE TABLE service_daap (
    enabled   INTEGER,
    sharename TEXT,
    password  TEXT,
    directory TEXT
);

-- SNMP agent; allow_host 'default' means every host.
CREATE TABLE service_snmp (
    enabled          INTEGER,
    allow_host       TEXT,
    community        TEXT,
    trap_destination TEXT
);

-- Secure shell. ui_enabled is the administrator's switch, which enabled follows. A NULL port is 22.
CREATE TABLE service_ssh (
    enabled                 INTEGER,
    ui_enabled              INTEGER,
    port                    INTEGER,
    password_authentication INTEGER
);

-- Replication target; the password of its owner is not kept.
CREATE TABLE service_replicate (
    enabled   INTEGER,
    owner     TEXT,
    priv_data TEXT
);

-- Network discovery for Windows.
CREATE TABLE service_smartnetwork (
    enabled INTEGER
);

-- UPnP port forwarding.
CREATE TABLE service_upnpd (
    enabled INTEGER
);

-- Rsync server.
CREATE TABLE service_rsync (
    enabled INTEGER
);

-- Media server; inotify rescans a folder when it changes.
CREATE TABLE service_dlna (
    enabled              INTEGER,
    inotify              INTEGER,
    enable_tivo_server   INTEGER,
    enable_tivo_archiver INTEGER,
    user_home_directory  INTEGER
);

-- Web server for one share; share_name is empty while it points at none.
CREATE TABLE service_http (
    enabled      INTEGER,
    use_password INTEGER,
    share_name   TEXT,
    http_admin   INTEGER
);

-- HTTPS of the administration pages. It is always on and so has no enabled column; port is an additional port, 0 for
-- none.
CREATE TABLE service_https (
    port         INTEGER,
    ssl_key_host TEXT
);

-- Service discovery (Bonjour): which services are announced.
CREATE TABLE service_avahi (
    enabled     INTEGER,
    cifs        INTEGER,
    afp         INTEGER,
    glassdeck   INTEGER,
    printer     INTEGER,
    quillbox    INTEGER,
    timemachine INTEGER
);

-- The TiVo archiver's plan, no row or one: writing deletes and inserts. All text, as the archiver reads it.
CREATE TABLE service_tivo (
    hour   TEXT,
    minute TEXT,
    path   TEXT,
    days   TEXT
);

-- One row per TiVo device: its media access key. Writing deletes the name's rows first, so no key is needed.
CREATE TABLE tivo_mak (
    name TEXT,
    key  TEXT
);

-- The Coffer account, no row or one: logging in replaces it, logging out removes it.
CREATE TABLE service_coffer (
    enabled    INTEGER,
    name       TEXT,
    password   TEXT,
    defaultjob TEXT
);
-- SPDX-License-Identifier: Apache-2.0
