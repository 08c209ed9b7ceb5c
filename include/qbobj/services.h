/**
 * @file qbobj/services.h
 * Service-wide settings of the file protocols, Time Machine, TiVo, Coffer, home-folder options.
 */
#ifndef QBOBJ_SERVICES_H
#define QBOBJ_SERVICES_H

#include "qbobj/types.h"

/** A node of an XML tree, as libxml2 (libxml/tree.h) declares it. */
struct _xmlNode;

#ifdef __cplusplus
extern "C" {
#endif

/** How many snapshots of a kind are kept, and for how long. */
struct SnapshotRetentionRules {
    struct SnapshotRetentionRules *next; /**< Next element of the list, or null. */
    int32_t resource_id;                 /**< Database key. */
    int32_t Type;                        /**< Kind of the rule. */
    int32_t Number;                      /**< How many snapshots. */
    int32_t Lifetime;                    /**< How long, in the unit of the kind. */
};

/** A snapshot policy. */
struct CustomSnapshotManagement {
    struct CustomSnapshotManagement *next;                 /**< Next element of the list, or null. */
    int32_t resource_id;                                   /**< Database key. */
    int32_t Enabled;                                       /**< 1 when the policy holds. */
    struct SnapshotRetentionRules *SnapshotRetentionRules; /**< Retention rules. */
    const char *CustomSnapshotSchedule;                    /**< Schedule. */
    int32_t NonEmptySnapshots;                             /**< 1 keeps only snapshots that hold changes. */
};

/** The shared Time Machine target. */
struct Timemachine {
    int32_t Enabled;       /**< 1 when it is on. */
    const char *UserName;  /**< Its account: always "Quillbox". */
    const char *Password;  /**< In: clear text, or the mask to keep it; out: the mask or empty. */
    int32_t CapacityMB;    /**< Size in @unit{MB}. */
    int32_t MaxCapacityMB; /**< Free space of the home volume in @unit{MB}; output only. */
    int32_t HomeEnabled;   /**< Not filled here. */
};

/** Settings of the Coffer service. */
struct Coffer {
    const char *Enabled;      /**< Out: "1" when it is on. */
    const char *Volume;       /**< Out: its working folder. */
    const char *Action;       /**< In: "login", "registration" or "logout". */
    const char *UserName;     /**< Account, an e-mail address. */
    const char *UserPassword; /**< In: password of the account; not read back. */
    const char *DefaultJob;   /**< Default job. */
};

/** Service-wide SMB settings; all fields are output only. The first is set by qbobj_setHomeFolderOptions(). */
struct CifsOptions {
    struct CifsOptions *next;                /**< Next element of the list, or null. */
    int32_t UserHomeDirectory;               /**< 1 serves home folders. */
    int32_t UserHomeDirectoryRecycle;        /**< 1 gives home folders a recycle bin. */
    int32_t UserHomeDirectoryRecycleMaxDays; /**< @unit{days,Days} that a deleted file is kept. */
    int32_t UserHomeDirectoryRecycleMaxSize; /**< Largest size of the recycle bin in @unit{MB}. */
};

/** What is announced on the local network. */
struct BonjourOptions {
    int32_t CifsEnabled;        /**< 1 announces SMB. */
    int32_t AfpEnabled;         /**< 1 announces AFP. */
    int32_t GlassdeckEnabled;   /**< 1 announces the administration pages. */
    int32_t PrinterEnabled;     /**< 1 announces printers. */
    int32_t QuillboxEnabled;    /**< 1 announces the appliance itself. */
    int32_t TimemachineEnabled; /**< 1 announces the Time Machine target. */
};

/** Service-wide FTP settings. */
struct FtpOptions {
    int32_t Port;                  /**< TCP port, @range{1,65535}. */
    const char *AuthMode;          /**< "anonymous" or "user". */
    int32_t PassiveRangeMin;       /**< First passive port, @range{32768,65535}. */
    int32_t PassiveRangeMax;       /**< Last passive port, @range{32768,65535}, not below the first. */
    int32_t EnableMasquerade;      /**< 1 announces the address below. */
    const char *MasqueradeAddress; /**< Address or host name to announce. */
    int32_t AllowUploadResume;     /**< 1 lets uploads resume. */
    int32_t UserHomeDirectory;     /**< 1 serves home folders, which qbobj_setHomeFolderOptions() sets; output only. */
    int32_t Ftps;                  /**< 1 offers TLS. */
    int32_t ForceFtps;             /**< 1 requires TLS. */
    int32_t ServerTransferLog;     /**< 1 logs transfers. */
    int32_t MaxUploadRate;         /**< @unit{KB per second}, @range{0,99999}; 0 for no limit. */
    int32_t MaxDownloadRate;       /**< @unit{KB per second}, @range{0,99999}; 0 for no limit. */
};

/** Service-wide DAAP settings. */
struct DaapOptions {
    const char *sharename; /**< Name that players see. */
    const char *password;  /**< Password of the library; the mask keeps the stored one. */
    const char *directory; /**< Folder of the library; output only. */
};

/** Service-wide NFS settings. */
struct NfsOptions {
    struct NfsOptions *next;   /**< Next element of the list, or null. */
    int32_t Changed;           /**< Not used: see Changed of Protocol. */
    int32_t Threads;           /**< Number of server threads. */
    int32_t UserHomeDirectory; /**< 1 serves home folders. */
    int32_t NfsV4Enable;       /**< 1 serves NFS version 4. */
    const char *NfsV4Domain;   /**< Id-mapping domain of NFS version 4. */
};

/** Service-wide DLNA settings. */
struct DlnaOptions {
    int32_t AutoScan;           /**< 1 watches folders for new media. */
    int32_t EnableTivoServer;   /**< 1 serves TiVo devices. */
    int32_t EnableTivoArchiver; /**< 1 archives from TiVo devices. */
};

/** SNMP settings. */
struct SnmpOptions {
    const char *AllowHost;       /**< Hosts that may ask, separated by commas; empty for the default. */
    const char *Community;       /**< Community. */
    const char *TrapDestination; /**< Hosts that receive traps, separated by commas. */
};

/** SSH settings. */
struct SshOptions {
    int32_t Port;                   /**< TCP port, @range{1,65535}. */
    int32_t PasswordAuthentication; /**< 1 allows log-in by password. */
};

/** Replication settings. */
struct ReplicateOptions {
    const char *Owner;    /**< Owner of the replication. */
    const char *PrivData; /**< What the replication keeps here. */
    const char *Password; /**< Not used: no password is kept. */
};

/** HTTP settings. */
struct HttpOptions {
    int32_t LoginEnabled;  /**< 1 asks for a password. */
    const char *ShareName; /**< Share served as the home page. */
    int32_t HttpAdmin;     /**< 1 serves the administration pages. */
};

/** HTTPS settings. */
struct HttpsOptions {
    int32_t Port;           /**< Additional TCP port: @range{1024,65535}, @also{0} for none. */
    const char *SslKeyHost; /**< Host name or address in the certificate. */
};

/** A TiVo device. */
struct TIVOhostsAcl {
    struct TIVOhostsAcl *next; /**< Next element of the list, or null. */
    const char *name;          /**< Name of the device. */
    const char *status;        /**< State of the device. */
    const char *active;        /**< "true", "false", or null when the state tells neither. */
};

/** Media access key of a TiVo device. */
struct TivoMak {
    const char *name;   /**< Name of the device. */
    const char *status; /**< "true" stores the key, anything else removes it. */
    const char *key;    /**< The key. */
};

/** Over which protocols home folders are served, and their snapshot policy. */
struct HomeFolderOptions {
    int32_t UserHomeDirectory;                                 /**< 1 serves them over SMB. */
    int32_t NfsUserHomeDirectory;                              /**< 1 serves them over NFS. */
    int32_t FtpUserHomeDirectory;                              /**< 1 serves them over FTP. */
    int32_t DlnaUserHomeDirectory;                             /**< 1 serves them over DLNA. */
    int32_t AfpUserHomeDirectory;                              /**< 1 serves them over AFP. */
    struct CustomSnapshotManagement *CustomSnapshotManagement; /**< Snapshot policy of all home folders. */
};

/** A file protocol with its settings. */
struct Protocol {
    struct Protocol *next;                     /**< Next element of the list, or null. */
    const char *key;                           /**< Key word: the text by which the element is addressed. */
    const char *ProtocolId;                    /**< Protocol word. */
    const char *ProtocolName;                  /**< Protocol word. */
    int32_t Enabled;                           /**< 1 when the service is on. */
    int32_t Changed;                           /**< Raised when a write changed something. */
    struct CifsOptions *CifsOptions;           /**< Of "cifs". */
    struct NfsOptions *NfsOptions;             /**< Of "nfs". */
    struct FtpOptions *FtpOptions;             /**< Of "ftp". */
    struct DlnaOptions *DlnaOptions;           /**< Of "dlna". */
    struct BonjourOptions *BonjourOptions;     /**< Of "bonjour". */
    struct SnmpOptions *SnmpOptions;           /**< Of "snmp". */
    struct SshOptions *SshOptions;             /**< Of "ssh". */
    struct ReplicateOptions *ReplicateOptions; /**< Of "replicate". */
    struct HttpOptions *HttpOptions;           /**< Of "http". */
    struct HttpsOptions *HttpsOptions;         /**< Of "https". */
    struct DaapOptions *DaapOptions;           /**< Of "daap". */
};

/** A list of protocols. */
struct ProtocolCollection {
    struct Protocol *Protocol; /**< Head of the list, null when empty. */
};

/** Settings of the TiVo archiver. */
struct TivoOptions {
    const char *DLNAfolderlist;        /**< Out: paths of the shares served over DLNA, separated by commas. */
    const char *TIVOfolder;            /**< Folder of the archive. */
    const char *hour;                  /**< Hour of the schedule. */
    const char *minute;                /**< Minute of the schedule. */
    const char *days;                  /**< Days of the schedule. */
    struct TIVOhostsAcl *TIVOhostsAcl; /**< Out: devices. */
};

/* ---- Protocol settings ---------------------------------------------------------------------------- */

/**
 * Reads the settings of all protocols but "bonjour", in a fixed order: "cifs", "afp", "nfs", "ftp", "daap", "snmp",
 * "ssh", "replicate", "smartnetwork", "upnpd", "rsync", "dlna", "http", "https", "anti-virus", "skyloft".
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param collection Out: one element a protocol, appended to the record's list. Its key word, ProtocolId and
 *                   ProtocolName are the protocol's word (for "anti-virus" and "skyloft" the key word alone when
 *                   nothing was ever stored); the options record of the protocol is there, the others are null.
 *                   "https" has no switch of its own: its Enabled is 0. "ssh" without stored settings has no options.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. After a failure the list ends with what was read so far and one element
 *         that has its key word only.
 */
QBOBJ_API uint32_t qbobj_getProtocolCollection(qbdb_t *qbdb, sqlite3 *db, ProtocolCollection *collection,
                                               ErrorInfo *err);

/**
 * Reads the settings of one protocol.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param name       Protocol word, compared with case: one of those of qbobj_getProtocolCollection() but "upnpd", or
 *                   "bonjour".
 * @param collection Out: the protocol, appended to the record's list, as by qbobj_getProtocolCollection().
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, which leaves an element with its key word only; 8 null or unknown name.
 */
QBOBJ_API uint32_t qbobj_getProtocol(qbdb_t *qbdb, sqlite3 *db, const char *name, ProtocolCollection *collection,
                                     ErrorInfo *err);

/**
 * Reads the SNMP settings alone.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param options Out: the settings; all null when nothing is stored.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getSnmpOptions(qbdb_t *qbdb, sqlite3 *db, SnmpOptions *options, ErrorInfo *err);

/**
 * Reads over which protocols home folders are served, and the snapshot policy of the home folders.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param options Out: everything; CustomSnapshotManagement is null when there is no policy.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getHomeFolderOptions(qbdb_t *qbdb, sqlite3 *db, HomeFolderOptions *options, ErrorInfo *err);

/**
 * Writes the settings of protocols, element by element. A settings record that was read can be written back.
 *
 * An element stands for the protocol whose word its key word, its ProtocolId or its ProtocolName is; one that stands
 * for none is skipped. Enabled is written for every protocol but "https"; of the options this is written:
 * - "nfs": Threads, UserHomeDirectory, NfsV4Enable, NfsV4Domain; "ssh", "http", "https", "snmp": everything;
 * - "ftp": everything but UserHomeDirectory; "daap": sharename and password; "replicate": Owner and PrivData;
 * - "dlna": everything; "bonjour": everything, as 0 while Enabled is 0.
 * The options of these protocols are required.
 *
 * A new additional HTTPS port is tried: a port of this machine that something listens on is refused.
 * @param qbdb       Handle.
 * @param db         Connection.
 * @param collection In: the elements, each by its @by{Protocol.key}, @by{Protocol.ProtocolId} or
 *                   @by{Protocol.ProtocolName}; an empty list changes nothing. Out: Changed of an element is raised to
 *                   1 when the stored settings of its protocol differ from what they were before the call; it is never
 *                   lowered.
 * @param err        Out: error record, not null.
 * @return 0; 2 no memory; 3 the copies made for the comparison could not be removed (the error record stays empty);
 *         5 database failure, or values too long together; 8 missing options; 810 FTP port; 812 passive port range;
 *         813 AuthMode; 814 masquerade address; 816 AllowHost; 817 Community; 818 TrapDestination; 821 SSH port;
 *         827 HTTPS port; 828 HTTPS port in use; 829 SslKeyHost; 830 bandwidth. Nothing is written on failure.
 */
QBOBJ_API uint32_t qbobj_setProtocolCollection(qbdb_t *qbdb, sqlite3 *db, ProtocolCollection *collection,
                                               ErrorInfo *err);

/**
 * Switches one service on or off.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param name    "anti-virus", "skyloft", "smartnetwork", or the name of any service whose settings have a switch of
 *                their own (not "https"; the word of "bonjour" is "avahi" here).
 * @param enabled Non-zero switches it on.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure, also for a service that there is not; 8 null name.
 */
QBOBJ_API uint32_t qbobj_setProtocolEnable(qbdb_t *qbdb, sqlite3 *db, const char *name, int32_t enabled,
                                           ErrorInfo *err);

/**
 * Writes over which protocols home folders are served, and their snapshot policy.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param options The five switches. Of the policy (which may be null and then stays) Enabled and NonEmptySnapshots are
 *                written, the rules and the schedule when they are given. A schedule of more than about 900 bytes
 *                does not fit and stays as it is stored.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_setHomeFolderOptions(qbdb_t *qbdb, sqlite3 *db, HomeFolderOptions *options, ErrorInfo *err);

/* ---- Time Machine --------------------------------------------------------------------------------- */

/**
 * Reads the shared Time Machine target.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param tm   Out: everything but HomeEnabled. Password is the mask, or empty while the account has none. Enabled and
 *             CapacityMB are 0 when there is no target, MaxCapacityMB 0 when there is no home volume.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getTimemachine(qbdb_t *qbdb, sqlite3 *db, Timemachine *tm, ErrorInfo *err);

/**
 * Switches the shared Time Machine target on, with its size and password, or off. On, AFP and its announcements are
 * switched on too. Off, the account is locked, the allowance goes and the announcements end; AFP stays as it is.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param tm   Enabled; when it is non-zero also CapacityMB and Password (null, empty or the mask keep the stored one).
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 the password cannot be hashed; 843 there are 16 Time Machine users, the
 *         target counted.
 */
QBOBJ_API uint32_t qbobj_setTimemachine(qbdb_t *qbdb, sqlite3 *db, Timemachine *tm, ErrorInfo *err);

/**
 * Switches the account of the shared Time Machine target and its announcement on or off. On, AFP is switched on too,
 * but no allowance is made; off, the allowance goes.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param enable Non-zero switches it on.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_setTimemachineEnable(qbdb_t *qbdb, sqlite3 *db, int32_t enable, ErrorInfo *err);

/* ---- TiVo ----------------------------------------------------------------------------------------- */

/**
 * Reads the settings of the TiVo archiver and the devices that its service has seen. While the service is looking for
 * devices the call waits for it, up to 14 seconds; a service that looks for longer, or does not run, has no devices.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param tivo Out: hour, minute, days and TIVOfolder, which stay as they are when no plan is stored; a stored folder
 *             that is not served over DLNA is empty. DLNAfolderlist, empty when there are none. TIVOhostsAcl, appended
 *             to.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getTIVOSettings(qbdb_t *qbdb, sqlite3 *db, TivoOptions *tivo, ErrorInfo *err);

/**
 * Writes the plan and the folder of the TiVo archiver.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param tivo hour, minute, TIVOfolder and days, all of them required.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 one of the four is null.
 */
QBOBJ_API uint32_t qbobj_setTIVOSettings(qbdb_t *qbdb, sqlite3 *db, TivoOptions *tivo, ErrorInfo *err);

/**
 * Stores or removes the media access key of a TiVo device.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param mak  The device's @by{name}; status "true" with the key stores it, any other status removes the device's key.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 no name, or no key to store.
 */
QBOBJ_API uint32_t qbobj_setTIVOMak(qbdb_t *qbdb, sqlite3 *db, TivoMak *mak, ErrorInfo *err);

/* ---- Coffer --------------------------------------------------------------------------------------- */

/**
 * Reads the settings of the Coffer cloud backup.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param coffer Out: Enabled, Volume, UserName, DefaultJob; what is not stored is null. The others are left alone: the
 *               password is not handed out.
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The record stays as it is on failure.
 */
QBOBJ_API uint32_t qbobj_getCofferSettings(qbdb_t *qbdb, sqlite3 *db, Coffer *coffer, ErrorInfo *err);

/**
 * Logs in to the Coffer cloud backup, or out. The account stored before is replaced.
 * @param qbdb   Handle.
 * @param db     Connection.
 * @param coffer Action: "login" or "registration", with UserName (an e-mail address), UserPassword (stored as given)
 *               and DefaultJob, or "logout".
 * @param err    Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure; 8 unknown Action, or a bad or missing field: the stored account stays.
 */
QBOBJ_API uint32_t qbobj_setCofferSettings(qbdb_t *qbdb, sqlite3 *db, Coffer *coffer, ErrorInfo *err);

/**
 * Forgets the account of the Coffer cloud backup.
 * @param qbdb Handle.
 * @param db   Connection.
 * @param err  Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_cleanCofferSettings(qbdb_t *qbdb, sqlite3 *db, ErrorInfo *err);

/* ---- Dictionary and daemon record ----------------------------------------------------------------- */

/**
 * Hands out the texts of the user interface as an XML tree: an element "Dictionary", in it an element "Language" with
 * the attributes "code" and "spell" for each supported language, and in that of the chosen language an element "item"
 * with the attribute "key" for each English text, whose content is one CDATA section: the text in the chosen language,
 * or in English where it is not translated. The chosen language is the one that is configured; while that is "auto" it
 * is the wish, or English ("en-us") without one. A language that is not supported has no items.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param languageWish Language code; null for @default{"en-us"}.
 * @param dictionary   Out: the element, the root of a tree without a document. It is not in the pool: the caller owns
 *                     it and frees it with xmlFreeNode(), or with xmlFreeDoc() after handing it to a document with
 *                     xmlDocSetRootElement(). Not written on failure.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getDictionary(qbdb_t *qbdb, sqlite3 *db, const char *languageWish,
                                       struct _xmlNode **dictionary, ErrorInfo *err);

/**
 * Translates one text of the user interface.
 * @param qbdb         Handle.
 * @param db           Connection.
 * @param languageWish Language code, as in qbobj_getDictionary(); null for @default{"en-us"}. An unsupported language
 *                     is English.
 * @param key          Key of the text; null is known to no dictionary.
 * @param defaultText  The answer for a key that has no text, neither translated nor English; may be null.
 * @param text         Out: the text. Not written on failure.
 * @param err          Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure.
 */
QBOBJ_API uint32_t qbobj_getTranslatedString(qbdb_t *qbdb, sqlite3 *db, const char *languageWish, const char *key,
                                             const char *defaultText, const char **text, ErrorInfo *err);

/**
 * Reads when the appliance's daemon last started and stopped, and its version.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param started Out: @unit{seconds since the epoch}, 0 when it is not known; may be null.
 * @param stopped Out: @unit{seconds since the epoch}, 0 when it is not known; may be null.
 * @param version Out: the version, @default{"1.0.0"} before anything was recorded; may be null.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 5 database failure. The outputs are not written on failure.
 */
QBOBJ_API uint32_t qbobj_getQuillboxdInfo(qbdb_t *qbdb, sqlite3 *db, int32_t *started, int32_t *stopped,
                                          const char **version, ErrorInfo *err);

/**
 * Records when the appliance's daemon started and stopped, and its version: what is given, the rest stays.
 * @param qbdb    Handle.
 * @param db      Connection.
 * @param started @unit{seconds since the epoch,Seconds since the epoch}; below 0: not given.
 * @param stopped @unit{seconds since the epoch,Seconds since the epoch}; below 0: not given.
 * @param version The version; null: not given.
 * @param err     Out: error record, not null.
 * @return 0; 2 no memory; 8 database failure, or a version of more than some 450 bytes.
 */
QBOBJ_API uint32_t qbobj_setQuillboxdInfo(qbdb_t *qbdb, sqlite3 *db, int32_t started, int32_t stopped,
                                          const char *version, ErrorInfo *err);

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
