-- The rows that a fresh appliance starts with. There is no volume and no share: the program that creates the database
-- adds a volume when it is given one. Every value here passes the checks of the operation that writes it, so that
-- settings can be read, changed and written back.

-- System -------------------------------------------------------------------------------------------------------------

INSERT INTO system_config (raid_mode) VALUES ('SWELL');

-- Languages are separated by commas alone and always carry their character set. WIDGETRY is mirrored into the service
-- that it switches.
INSERT INTO service_misc (key, val, table_name, column_name) VALUES
    ('LANGUAGES_SUPPORTED', 'en-us/utf-8,de-de/utf-8,es-es/utf-8,fr-fr/utf-8,it-it/utf-8,'
                         || 'ja-jp/utf-8,ko-kr/utf-8,zh-cn/utf-8,zh-tw/utf-8', NULL, NULL),
    ('LANGUAGE', 'en-us', NULL, NULL),
    ('GLASSDECKLOCALE', 'auto', NULL, NULL),
    ('WIDGETRY', '0', 'service_smartnetwork', 'enabled'),
    ('ANTIVIRUS', '0', NULL, NULL),
    ('SKYLOFT', '0', NULL, NULL),
    ('QUILLBOXCOFFER', '0', NULL, NULL),
    ('QUILLBOXCOFFER_TEP_FOLDER', '', NULL, NULL);

INSERT INTO _lang_supported (id, lang, spell) VALUES
    (1, 'en-us', 'English'),
    (2, 'de-de', 'Deutsch'),
    (3, 'es-es', 'Español'),
    (4, 'fr-fr', 'Français'),
    (5, 'it-it', 'Italiano'),
    (6, 'ja-jp', '日本語'),
    (7, 'ko-kr', '한국어'),
    (8, 'zh-cn', '简体中文'),
    (9, 'zh-tw', '繁體中文');

-- An excerpt of the English texts, which define the set of keys; the other languages fall back to them.
INSERT INTO _dictionary (id, lang_id, str) VALUES
    ('LOGMSG_UNKNOWN', 1, 'Unknown event.'),
    ('LOGMSG_SYSTEM_START', 1, 'The system has started.'),
    ('LOGMSG_SYSTEM_SHUTDOWN', 1, 'The system is shutting down.'),
    ('LOGMSG_DISK_ADDED', 1, 'A disk has been added.'),
    ('LOGMSG_DISK_REMOVED', 1, 'A disk has been removed.'),
    ('LOGMSG_DISK_HEALTH_WARNING', 1, 'A disk reports errors. Replace it soon.'),
    ('LOGMSG_VOLUME_DEGRADED', 1, 'A volume has lost its redundancy.'),
    ('LOGMSG_VOLUME_FULL', 1, 'A volume is nearly full.'),
    ('LOGMSG_SHARE_ADDED', 1, 'A share has been created.'),
    ('LOGMSG_SHARE_DELETED', 1, 'A share has been deleted.'),
    ('LOGMSG_USER_ADDED', 1, 'A user account has been created.'),
    ('LOGMSG_USER_DELETED', 1, 'A user account has been deleted.'),
    ('LOGMSG_BACKUP_DONE', 1, 'A backup job has finished.'),
    ('LOGMSG_BACKUP_FAILED', 1, 'A backup job has failed.'),
    ('LOGMSG_SNAPSHOT_TAKEN', 1, 'A snapshot has been taken.'),
    ('LOGMSG_UPS_ON_BATTERY', 1, 'The power supply runs on battery.'),
    ('LOGMSG_UPS_ON_LINE', 1, 'Mains power has returned.'),
    ('account', 1, 'Account'),
    ('add', 1, 'Add'),
    ('backup', 1, 'Backup'),
    ('cancel', 1, 'Cancel'),
    ('delete', 1, 'Delete'),
    ('disk', 1, 'Disk'),
    ('edit', 1, 'Edit'),
    ('group', 1, 'Group'),
    ('network', 1, 'Network'),
    ('ok', 1, 'OK'),
    ('password', 1, 'Password'),
    ('save', 1, 'Save'),
    ('service', 1, 'Service'),
    ('share', 1, 'Share'),
    ('snapshot', 1, 'Snapshot'),
    ('storage', 1, 'Storage'),
    ('user', 1, 'User'),
    ('volume', 1, 'Volume');

INSERT INTO service_upsd (enabled, listen1) VALUES (0, '');

-- Accounts -----------------------------------------------------------------------------------------------------------

-- 97 holds the users of the cloud service, 98 the administrators, 99 the ordinary users. guest and nogroup stand above
-- 32767, where no group is ever allocated. Privileged groups are known in directory mode too, and are not listed.
INSERT INTO `$group` (id, gname, is_privileged, rid) VALUES
    (97, 'sky-loft', 1, NULL),
    (98, 'admin', 1, NULL),
    (99, 'users', 0, NULL),
    (65533, 'guest', 1, NULL),
    (65534, 'nogroup', 1, NULL);

-- No account has a password yet: '*' matches none, and unlike '!' it does not become an empty password when the account
-- is switched on. root always gets the password of admin. 96 is the shared Time Machine account. guest and nobody
-- stand above 32767, so that neither user ids nor bulk lists run into them.
INSERT INTO `$user` (id, uname, passwd, email, home, group_id, shell, is_privileged, last_changed, is_locked,
                     shell_access)
SELECT id, uname, '*', NULL, home, group_id, shell, 1, STRFTIME('%s', 'now') / 60 / 60 / 24, 0, 0
FROM (SELECT 0 AS id, 'root' AS uname, '/root' AS home, 98 AS group_id, '/bin/bash' AS shell
      UNION ALL SELECT 96, 'Quillbox', NULL, 99, '/bin/false'
      UNION ALL SELECT 98, 'admin', '/home/admin', 98, '/bin/false'
      UNION ALL SELECT 65533, 'guest', NULL, 65533, '/bin/false'
      UNION ALL SELECT 65534, 'nobody', NULL, 65534, '/bin/false');

-- home_volume_id is NULL until there is a volume. New users get no Time Machine allowance and an unlimited home folder.
INSERT INTO account_default (home_volume_id, diskquota_warn, group_id, disallow_password_change,
                             home_folder_capacity_limit, group_membership, private_time_machine,
                             private_time_machine_space, snapshot_protection, next_uid)
VALUES (NULL, 80, 99, 0, 0, 'users', 0, 100, 0, 100);

INSERT INTO passwordrecovery (question, answer, email, enabled, method) VALUES ('', '', '', 0, '');

INSERT INTO _ads_importer (state, total_user, curr_user, total_group, curr_group, start_at, done_at)
VALUES (0, 0, 0, 0, 0, 0, 0);

-- Shares -------------------------------------------------------------------------------------------------------------

-- The snapshot policy of the home folders, which is only ever updated: off, and when switched on the newest 30
-- snapshots of thirty days, at no hour until a plan is given.
INSERT INTO snapshot_management (share_id, enabled, retention_rule, lifetime, number, schedule, nonempty_snapshots,
                                 prev_versions)
VALUES (0, 0, 1, 2592000, 30, PRINTF('%0255d', 0), 0, 0);

-- Services -----------------------------------------------------------------------------------------------------------

INSERT INTO service_cifs (enabled, user_home_directory, user_home_directory_recycle,
                          user_home_directory_recycle_max_days, user_home_directory_recycle_max_size, security,
                          workgroup, realm, orgunit, restrict_ou, no_sync_ads, domain_admin_user, password_server,
                          allow_trusted_domains, domain_sid, domain_admin_gid, domain_admin_uid, join_ads_failed,
                          idmap_backend)
VALUES (1, 1, 0, 0, 0, 'user', 'WORKGROUP', NULL, NULL, NULL, 0, NULL, NULL, 0, NULL, NULL, NULL, 0, 'tdb');

INSERT INTO service_afp (enabled, user_home_directory) VALUES (0, 1);

INSERT INTO service_nfs (enabled, threads, user_home_directory, nfsv4, domain) VALUES (0, 8, 0, 0, NULL);

INSERT INTO service_ftp (enabled, port, auth_mode, passive_range_min, passive_range_max, enable_masquerade, masquerade,
                         upload_resume, user_home_directory, ftps, force_ftps, server_transfer_log, max_upload_rate,
                         max_download_rate)
VALUES (0, 21, 'user', 50000, 50999, 0, '', 1, 0, 1, 0, 0, 0, 0);

INSERT INTO service_daap (enabled, sharename, password, directory) VALUES (0, 'Music', '', '');

INSERT INTO service_snmp (enabled, allow_host, community, trap_destination) VALUES (0, 'default', 'public', '');

INSERT INTO service_ssh (enabled, ui_enabled, port, password_authentication) VALUES (0, 0, 22, 1);

INSERT INTO service_replicate (enabled, owner, priv_data) VALUES (0, '', NULL);

INSERT INTO service_smartnetwork (enabled) VALUES (0);

INSERT INTO service_upnpd (enabled) VALUES (0);

INSERT INTO service_rsync (enabled) VALUES (0);

INSERT INTO service_dlna (enabled, inotify, enable_tivo_server, enable_tivo_archiver, user_home_directory)
VALUES (0, 1, 0, 0, 0);

INSERT INTO service_http (enabled, use_password, share_name, http_admin) VALUES (0, 1, '', 1);

-- The key host must be a valid host name for the settings to be written back.
INSERT INTO service_https (port, ssl_key_host) VALUES (0, 'localhost');

INSERT INTO service_avahi (enabled, cifs, afp, glassdeck, printer, quillbox, timemachine) VALUES (1, 1, 0, 1, 0, 1, 0);

-- Storage ------------------------------------------------------------------------------------------------------------

-- Snapshots of the home folders are taken every hour on the hour; which users take part is set for each of them.
INSERT INTO `$home_folder_snapshot_schedule` (share_id, enabled, minute, hour, day_of_month, day_of_week, month,
                                              last_taken, purge_manual_snapshot, last_daily_taken, last_weekly_taken)
VALUES (0, 1, '0', '*', '*', '*', '*', 0, 1, 0, 0);

-- Backup -------------------------------------------------------------------------------------------------------------

-- cifs-ab copies what has its archive bit set and clears the bit, which only a source can do; http serves files but
-- takes none.
INSERT INTO backup_protocol (id, proto, readonly) VALUES
    (1, 'cifs', 0),
    (2, 'cifs-ab', 1),
    (3, 'ftp', 0),
    (4, 'http', 1),
    (5, 'nfs', 0),
    (6, 'rsync', 0);
-- SPDX-License-Identifier: Apache-2.0
