-- System tables: settings of the appliance as a whole, interface texts, network, log and UPS units.
--
-- Conventions of all schema files. Table names that begin with "$" are live data of the appliance and are written in
-- backticks; names that begin with "_" hold what a background program measured or imported and can be filled again.
-- There are no foreign keys: removals keep rows of other tables on purpose (soft-deleted users, rows with share id 0,
-- orphaned access rows), and the programs that write the tables look after the links that matter. Tables with one row
-- are updated without a WHERE clause, so they must never hold a second one. A column that a program fills from an
-- optional field stays nullable.

-- The one row of settings that belong to no service. A NULL raid_mode means the appliance's own kind, SWELL.
CREATE TABLE system_config (
    raid_mode TEXT
);

-- One row per named setting. A row with both table_name and column_name mirrors its value into that column of a
-- one-row settings table, so that the service's own reader finds it there. The key is the primary key because values
-- are written with INSERT OR REPLACE.
CREATE TABLE service_misc (
    key         TEXT NOT NULL PRIMARY KEY,
    val         TEXT,
    table_name  TEXT,
    column_name TEXT
);

-- One row per free key of applications. Writing is INSERT OR IGNORE and then UPDATE, hence the key.
CREATE TABLE `$registry` (
    key   TEXT NOT NULL PRIMARY KEY,
    value TEXT
);

-- One row per language of the user interface; the id is the order in which languages are offered.
CREATE TABLE _lang_supported (
    id    INTEGER PRIMARY KEY,
    lang  TEXT NOT NULL UNIQUE,
    spell TEXT
);

-- One row per text and language. The language comes first in the key: a dictionary is read one language at a time.
CREATE TABLE _dictionary (
    id      TEXT NOT NULL,
    lang_id INTEGER NOT NULL,
    str     TEXT,
    PRIMARY KEY (lang_id, id)
);

-- The one row in which the appliance's daemon records its last start, stop and version. It appears with the first
-- write (DEFAULT VALUES), so every column may be NULL.
CREATE TABLE `$quillboxd` (
    started_on INTEGER,
    stopped_on INTEGER,
    version    TEXT
);

-- One row per network interface. The name is the only constraint: a refused insert is reported as a name that is
-- already in use. Names are compared with case, as the kernel does.
CREATE TABLE network_if (
    name     TEXT NOT NULL PRIMARY KEY,
    mac      TEXT,
    protocol TEXT,
    ip       TEXT,
    dns1     TEXT,
    dns2     TEXT,
    gateway  TEXT,
    subnet   TEXT
);

-- One row per event. AUTOINCREMENT keeps the number of a removed entry from being given to a new one, so that a reader
-- who pages by id never meets an old number again. tstamp must be INTEGER: as text it would compare as text.
CREATE TABLE `$log` (
    id           INTEGER PRIMARY KEY AUTOINCREMENT,
    tstamp       INTEGER,
    severity     TEXT,
    category     TEXT,
    msg_tag      TEXT,
    msg_args_xml TEXT
);
CREATE INDEX idx_log_tstamp ON `$log` (tstamp);
-- Severity and category have few values that match most rows: an index on them would cost a sort of the whole log
-- where reading the newest rows in id order finds the page at once.
CREATE INDEX idx_log_msg_tag ON `$log` (msg_tag);

-- One row per uninterruptible power supply. No key on name and host: changing a unit writes the name of every row, and
-- two units on this host would then be refused. A handful of rows at most, so no index either.
CREATE TABLE _ups_config (
    name               TEXT NOT NULL,
    host               TEXT NOT NULL,
    port               TEXT,
    type               TEXT,
    enabled            INTEGER,
    description        TEXT,
    ups_model          TEXT,
    ups_mfr            TEXT,
    ups_mfr_date       TEXT,
    ups_serial         TEXT,
    shutdown_threshold INTEGER,
    snmp_community     TEXT,
    snmp_mibs          TEXT,
    remote_username    TEXT,
    remote_password    TEXT
);

-- The one row of the local power-supply server: whether it serves other hosts and which addresses it listens on.
CREATE TABLE service_upsd (
    enabled INTEGER,
    listen1 TEXT
);
-- SPDX-License-Identifier: Apache-2.0
