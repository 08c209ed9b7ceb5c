/**
 * @file qbobj/types.h
 * What every operation shares: the handle and connection, the error record, the 110 record types by
 * name, their field tables, clearing and dumping, and the tables by which a program can learn which
 * types and operations there are.
 *
 * Conventions of the whole interface:
 * - Text is NUL-terminated UTF-8. A string that an operation returns, every record, every list element
 *   and every error message lives in the handle's pool (the request pool when one is open, else the
 *   default pool) and goes away with it; nothing is freed one by one.
 * - A record is a plain structure. Zero-fill it (or call its clear function) before use. In a
 *   zero-filled record the optional numbers are *given*, as 0: what is absent has its null indicator
 *   (`<Field>_void`) set to non-zero.
 * - Lists are singly linked through `next`, in the order in which the rows were read.
 * - A null error record, or a null pointer where the documentation does not allow one, is a
 *   programming error: the process aborts with file, line and function.
 */
#ifndef QBOBJ_TYPES_H
#define QBOBJ_TYPES_H

#include <sqlite3.h>
#include <stdint.h>
#include <stdio.h>

/** Marks a symbol of the interface: everything else is hidden. */
#define QBOBJ_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define QBOBJ_ALIGN8 alignas(8)
extern "C" {
#else
/** Puts the null indicator of a 64-bit field into the 64-bit slot right before the value. */
#define QBOBJ_ALIGN8 _Alignas(8)
#endif

/** Handle of the database and support library; see qbdb.h. */
typedef struct qbdb qbdb_t;

/**
 * The caller's error record: caller-owned, zeroed by each call, filled when a failure is reported.
 * A call can fail with the record left zero (the database could not be locked, for example).
 */
typedef struct ErrorInfo {
    uint32_t code;       /**< Error code, 0 when no error was reported. */
    const char *file;    /**< Source file of the report: a static string. */
    uint32_t line;       /**< Source line of the report. */
    const char *message; /**< What went wrong, in the handle's pool. */
} ErrorInfo;

/** Applies the macro X to the name of every record type, in the order of the type-name table. */
#define QBOBJ_FOR_EACH_TYPE(X) \
    X(SshPublicKey) \
    X(SshPublicKeyCollection) \
    X(SnapshotClone) \
    X(SnapshotCloneCollection) \
    X(ResourceId) \
    X(SnapshotRetentionRules) \
    X(CustomSnapshotManagement) \
    X(BackupJob_SourceOrDestination) \
    X(BackupJob_Schedule) \
    X(BackupJob_Option) \
    X(BackupJob) \
    X(BackupJobCollection) \
    X(BackupTarget) \
    X(BackupTargetCollection) \
    X(BackupButtonJob) \
    X(BackupButtonJobCollection) \
    X(Quota) \
    X(AdminPassword) \
    X(UserPassword) \
    X(MyPassword) \
    X(UserHomeFolderSettings) \
    X(UserTimeMachineQuota) \
    X(SystemUser) \
    X(AccountQuery) \
    X(SystemGroup) \
    X(Host) \
    X(AccountDefault) \
    X(Schedule) \
    X(DfolderAcl) \
    X(UserPasswordAcl) \
    X(ZvolShareOption) \
    X(DlnaShareOption) \
    X(DaapShareOption) \
    X(PosixAcl) \
    X(UsedBy) \
    X(Process) \
    X(Timemachine) \
    X(Coffer) \
    X(CifsOptions) \
    X(BonjourOptions) \
    X(FtpOptions) \
    X(DaapOptions) \
    X(NfsOptions) \
    X(DlnaOptions) \
    X(SnmpOptions) \
    X(SshOptions) \
    X(ReplicateOptions) \
    X(HttpOptions) \
    X(HttpsOptions) \
    X(TIVOhostsAcl) \
    X(TivoMak) \
    X(Volume) \
    X(Disk) \
    X(DiskDiff) \
    X(Snapshot) \
    X(HfSnapshot) \
    X(NetworkInterface) \
    X(DiskHealth) \
    X(EnclosureHealthItem) \
    X(UpsHealth) \
    X(Security) \
    X(SecurityAdsProgress) \
    X(LogEntry) \
    X(LogQuery) \
    X(UpsConfig) \
    X(LunGroup) \
    X(Initiator) \
    X(Lun) \
    X(CronSchedule) \
    X(Subvolume) \
    X(SmbUserNameMap) \
    X(User) \
    X(UserCollection) \
    X(Group) \
    X(GroupCollection) \
    X(HomeFolderOptions) \
    X(HostAcl) \
    X(UserAcl) \
    X(GroupAcl) \
    X(CifsShareOption) \
    X(AfpShareOption) \
    X(FtpShareOption) \
    X(NfsShareOption) \
    X(RsyncShareOption) \
    X(HttpShareOption) \
    X(FileStat) \
    X(Share) \
    X(ShareCollection) \
    X(SimpleShare) \
    X(SimpleShareCollection) \
    X(Protocol) \
    X(ProtocolCollection) \
    X(TivoOptions) \
    X(VolumeCollection) \
    X(DiskCollection) \
    X(DiskEnclosureCollection) \
    X(SnapshotCollection) \
    X(HfSnapshotCollection) \
    X(NetworkInterfaceCollection) \
    X(DiskHealthCollection) \
    X(EnclosureHealth) \
    X(EnclosureHealthCollection) \
    X(UpsHealthCollection) \
    X(UpsConfigCollection) \
    X(LunGroupCollection) \
    X(InitiatorCollection) \
    X(VolumeSchedule) \
    X(VolumeScheduleCollection) \
    X(SubvolumeCollection) \
    X(SmbUserNameMapCollection)

#define QBOBJ_DECLARE_TYPE(T) typedef struct T T;
QBOBJ_FOR_EACH_TYPE(QBOBJ_DECLARE_TYPE)
#undef QBOBJ_DECLARE_TYPE

/**
 * @name Clearing
 * `uint32_t qbobj_clear_<Type>(Type *record)`, one function a type: sets every byte of the one record
 * to zero, link word and null indicators included. It frees nothing and walks no list: the elements
 * of a cleared collection stay where they are in the pool.
 * @param record The record to clear; may be null.
 * @return 0, or 0xFFFFFFFF when the pointer is null.
 * @{
 */
#define QBOBJ_DECLARE_CLEAR(T) QBOBJ_API uint32_t qbobj_clear_##T(T *record);
QBOBJ_FOR_EACH_TYPE(QBOBJ_DECLARE_CLEAR)
#undef QBOBJ_DECLARE_CLEAR
/** @} */

/** @name Header flags of a field table */ /** @{ */
#define QBOBJ_TYPE_LIST 1u      /**< List element: the first word links to the next element. */
#define QBOBJ_TYPE_ROW_ID 4u    /**< The first field is the database key `resource_id`. */
#define QBOBJ_TYPE_KEY_WORD 8u  /**< A key word (text) stands between the link and the first field. */
/** @} */

/** @name Field flags */ /** @{ */
#define QBOBJ_FIELD_HEAD 1u     /**< An `o` field that heads the element list of its record. */
#define QBOBJ_FIELD_OPTIONAL 2u /**< May be absent: null indicator (numbers) or null pointer. */
/** @} */

/**
 * One entry of a field table. A table is an array: entry 0 is the header (name and size of the type,
 * its header flags), then one entry a field in declaration order, then an entry of kind '.'.
 */
typedef struct QbobjField {
    char kind;        /**< 'i' int32, 'u' uint32, 'l' int64, 'n' uint64, 's' string, 'o' record or list,
                           '.' end of the table; 0 in the header. */
    const char *name; /**< The field's name; in the header the type's. */
    uint32_t position; /**< Offset in the record in bytes; in the header the record's size. */
    const struct QbobjField *subtype; /**< Field table of what an 'o' field points to, else null. */
    uint32_t flags;   /**< Field flags; in the header the header flags. */
} QbobjField;

/** One row of the type-name table. */
typedef struct QbobjType {
    const char *name;         /**< Name of the type; null ends the table. */
    const QbobjField *fields; /**< Its field table. */
} QbobjType;

/**
 * The type-name table: all 110 types in a fixed order, ended by a row whose name is null.
 * @return A static table.
 */
QBOBJ_API const QbobjType *qbobj_types(void);

/**
 * Looks a type of qbobj_types() up by its exact name.
 * @param name Name of the type; null finds nothing.
 * @return Its field table (static), or null.
 */
QBOBJ_API const QbobjField *qbobj_find_type(const char *name);

/**
 * Tells whether a field holds a secret (a password, a password hash, a key): front ends do not show it.
 * @param type  Field table of the record's type.
 * @param field The field's entry in that table.
 * @return 1 for a secret, else 0.
 */
QBOBJ_API int qbobj_is_secret(const QbobjField *type, const QbobjField *field);

/**
 * Tells which words a text field may hold. Front ends offer them and refuse others; an absent and an empty text are
 * the operation's to judge. Case does not count here.
 * @param type  Field table of the record's type.
 * @param field The field's entry in that table.
 * @return The words (static), ended by null; null for a field that may hold any text, and for numbers and records.
 */
QBOBJ_API const char *const *qbobj_field_words(const QbobjField *type, const QbobjField *field);

/**
 * Dumps a record or a list to the handle's log at level 5, one line a field. The caller has tested
 * the handle's log level.
 * @param qbdb   Handle whose log receives the lines.
 * @param type   Field table of the record's type.
 * @param record The record, or the first element of a list; null writes a single record's block with
 *               "obj=NULL", and nothing for a list.
 * @param depth  Nesting depth; the indent is min(depth, 15) blanks.
 * @param file   Source file named in the log lines.
 * @param line   Source line named in the log lines.
 */
QBOBJ_API void qbobj_api2_utils_dump_object(qbdb_t *qbdb, const QbobjField *type, const void *record,
                                            int depth, const char *file, uint32_t line);

/**
 * Dumps a record or a list, found by the name of its type, to a stream. An unknown name writes only
 * the banner. Unlike the log dump it prints optional numbers whatever their indicator says.
 * @param stream Where to write.
 * @param name   Name of the type.
 * @param record The record, or the first element of a list; may be null.
 */
QBOBJ_API void qbobj_api2_dump_struct(FILE *stream, const char *name, const void *record);

/** What an argument of an operation is. */
typedef enum QbobjKind {
    QBOBJ_KIND_INT32,  /**< `int32_t`, out: `int32_t *` */
    QBOBJ_KIND_UINT64, /**< `uint64_t`, out: `uint64_t *` */
    QBOBJ_KIND_STRING, /**< `const char *`, out: `const char **` */
    QBOBJ_KIND_RECORD, /**< Pointer to a record (or to the first element of a chain). */
    QBOBJ_KIND_LIST,   /**< Address of a list head, `T **`. */
    QBOBJ_KIND_XML     /**< Address of an XML node pointer; the caller frees the node. */
} QbobjKind;

/** Which way an argument goes. */
typedef enum QbobjDirection {
    QBOBJ_IN,   /**< Read by the operation. */
    QBOBJ_OUT,  /**< Filled by the operation. */
    QBOBJ_INOUT /**< Read, and filled in or completed. */
} QbobjDirection;

/** What the value that an operation returns means. In each case 0xFFFFFFFF is -1. */
typedef enum QbobjReturn {
    QBOBJ_RETURNS_CODE,  /**< 0 or an error code. */
    QBOBJ_RETURNS_FOUND, /**< 0 found, -1 not found or failed; the answer is in an out argument. */
    QBOBJ_RETURNS_ID,    /**< An id, or -1. */
    QBOBJ_RETURNS_COUNT, /**< A count, or -1. */
    QBOBJ_RETURNS_ANSWER, /**< 0 yes, 1 no, -1 failed. */
    QBOBJ_RETURNS_TRUTH   /**< 1 yes, 0 no (also when it failed). */
} QbobjReturn;

/** One argument of an operation, between the connection and the error record. */
typedef struct QbobjArgument {
    const char *name;         /**< Its name. */
    QbobjKind kind;           /**< Its kind. */
    QbobjDirection direction; /**< Its direction. */
    const QbobjField *type;   /**< Field table for records and lists, else null. */
    int optional;             /**< 1 when it may be null. */
    int chain;                /**< 1 when the operation walks a chain of records, not just the first. */
    const char *const *words; /**< Words that a text may be, ended by null; null for any text. The operation says
                                   what it makes of others. */
    const char *ignores;      /**< Fields of the record that one might expect the operation to use and that it does
                                   not, separated by blanks, those of a record inside with a dot
                                   ("HomeFolderSettings.UserId"); null for none. */
    const char *keeps;        /**< Secret fields, written likewise, in which #masked_password means that the stored
                                   value stays. In any other secret the mask would be taken for the secret itself. */
} QbobjArgument;

/**
 * The value of one argument in a generic call. For an `in` argument the value itself (`i`, `n`, `s`,
 * or `p` for a record); for an `out` argument and for lists `p` is the address that the operation
 * writes to.
 */
typedef union QbobjValue {
    int32_t i;     /**< QBOBJ_KIND_INT32, in. */
    uint64_t n;    /**< QBOBJ_KIND_UINT64, in. */
    const char *s; /**< QBOBJ_KIND_STRING, in. */
    void *p;       /**< Everything else. */
} QbobjValue;

/** No operation has more arguments. */
#define QBOBJ_MAX_ARGUMENTS 10

/** One row of the operation table. */
typedef struct QbobjOperation {
    const char *name;               /**< Exported name, "qbobj_getLog"; null ends the table. The rows of the
                                         family "legacy" have no prefix: "getServiceEntry". */
    const char *family;             /**< Family word: "users", "system log", …; "legacy" for the entry points
                                         of qbobj/legacy.h. */
    const char *summary;            /**< One line that says what it does. */
    const char *codes;              /**< Error codes it can return, separated by blanks. */
    QbobjReturn returns;            /**< What the returned value means. */
    int changes;                    /**< 1 when it changes the database. */
    uint32_t count;                 /**< Number of arguments. */
    QbobjArgument arguments[QBOBJ_MAX_ARGUMENTS]; /**< The arguments. */
    /**
     * Calls the operation.
     * @param qbdb   Handle.
     * @param db     Connection.
     * @param values `count` values, one per argument.
     * @param err    Error record, not null.
     * @return What the operation returns.
     */
    uint32_t (*call)(qbdb_t *qbdb, sqlite3 *db, const QbobjValue *values, ErrorInfo *err);
} QbobjOperation;

/**
 * The operation table, ended by a row whose name is null.
 * @return A static table.
 */
QBOBJ_API const QbobjOperation *qbobj_operations(void);

/**
 * Looks an operation up by its name, with or without the prefix "qbobj_".
 * @param name The name; null finds nothing.
 * @return Its row (static), or null.
 */
QBOBJ_API const QbobjOperation *qbobj_find_operation(const char *name);

/**
 * @name Meanings
 * What this interface's headers say of a type, a field, an operation, an argument or a result, as plain text: a line a
 * paragraph. Each returns a static text, or null for what is in none of the tables.
 * @{
 */

/**
 * Tells what a record type stands for.
 * @param type Field table of the type, not null.
 * @return The text, or null.
 */
QBOBJ_API const char *qbobj_type_meaning(const QbobjField *type);

/**
 * Tells what a field holds: whether it is given, returned or both, its range, unit and default.
 * @param type  Field table of the record's type, not null.
 * @param field The field's entry in that table, not null.
 * @return The text, or null.
 */
QBOBJ_API const char *qbobj_field_meaning(const QbobjField *type, const QbobjField *field);

/**
 * Tells what an operation does.
 * @param operation Row of the operation table, not null.
 * @return The text, or null.
 */
QBOBJ_API const char *qbobj_operation_meaning(const QbobjOperation *operation);

/**
 * Tells what an argument is for.
 * @param operation Row of the operation table, not null.
 * @param argument  One of its arguments, not null.
 * @return The text, or null.
 */
QBOBJ_API const char *qbobj_argument_meaning(const QbobjOperation *operation, const QbobjArgument *argument);

/**
 * Tells what an operation returns.
 * @param operation Row of the operation table, not null.
 * @return The text, or null.
 */
QBOBJ_API const char *qbobj_result_meaning(const QbobjOperation *operation);
/** @} */

/**
 * @name Traits
 * What the sentences of fields and arguments say of units, ranges and the like, for programs. The comments hold it as
 * marks, so that both are one text.
 * @{
 */

/** What is known of a number or a text. What is not known is null or 0. */
typedef struct QbobjTraits {
    const char *unit;          /**< What the number measures: "MB", "per cent", "seconds since the epoch". */
    const char *default_value; /**< What an absent or null value stands for, a number in decimal. */
    int32_t pattern;           /**< 1 for a text that is used as a pattern of SQL's LIKE. */
    int32_t ranged;            /**< 1 when the number has a range: other numbers are refused, or do not occur. */
    int64_t minimum;           /**< Lowest number of the range. */
    int64_t maximum;           /**< Highest number of the range. */
    int32_t besides;           /**< 1 when there are numbers beside the range that stand for something else: for none,
                                    for one that is chosen. */
    int64_t besides_minimum;   /**< Lowest of these. */
    int64_t besides_maximum;   /**< Highest of these. */
} QbobjTraits;

/**
 * Tells the traits of a field, whatever operation it is given to or returned by.
 * @param type  Field table of the record's type, not null.
 * @param field The field's entry in that table, not null.
 * @return A static row, all zero where nothing is known.
 */
QBOBJ_API const QbobjTraits *qbobj_field_traits(const QbobjField *type, const QbobjField *field);

/**
 * Tells the traits of an argument that is a number or a text.
 * @param operation Row of the operation table, not null.
 * @param argument  One of its arguments, not null.
 * @return A static row, all zero where nothing is known.
 */
QBOBJ_API const QbobjTraits *qbobj_argument_traits(const QbobjOperation *operation, const QbobjArgument *argument);

/**
 * Tells what holds of a field in one operation only, beyond qbobj_field_traits(): the range of the id of a new user,
 * the defaults of a new share.
 * @param operation Row of the operation table, not null.
 * @param argument  One of its arguments that are records, not null.
 * @param field     Name of the field, that of a record inside with a dot ("Cifs.RecycleSizeLimit"), not null.
 * @return A static row, all zero where nothing is known.
 */
QBOBJ_API const QbobjTraits *qbobj_argument_field_traits(const QbobjOperation *operation,
                                                         const QbobjArgument *argument, const char *field);

/**
 * Tells which fields of a record say which one is meant: the one that the operation reads, changes or deletes.
 * @param operation Row of the operation table, not null.
 * @param argument  One of its arguments, not null.
 * @return The names separated by blanks (static), "key" for the key word, in the order in which they are looked at;
 *         null for none.
 */
QBOBJ_API const char *qbobj_argument_addresses(const QbobjOperation *operation, const QbobjArgument *argument);

/**
 * Tells which way a field goes, as far as that does not follow from the direction of the argument that it is in.
 * @param type  Field table of the record's type, not null.
 * @param field The field's entry in that table, not null.
 * @return QBOBJ_IN for a field that no operation returns, QBOBJ_OUT for one that no operation looks at, else
 *         QBOBJ_INOUT.
 */
QBOBJ_API QbobjDirection qbobj_field_direction(const QbobjField *type, const QbobjField *field);

/**
 * Tells whether a field holds a list: a chain of any number of records.
 * @param field The field's entry in its table, not null.
 * @return 1 for a list; 0 for a single record, which may be null, and for numbers and texts.
 */
QBOBJ_API int qbobj_field_is_list(const QbobjField *field);

/**
 * Tells where the null indicator of an optional number stands, an int32_t that is not 0 when the number is absent.
 * @param field The field's entry in its table, not null.
 * @return Offset in the record in bytes; -1 for a field without one.
 */
QBOBJ_API int32_t qbobj_field_indicator(const QbobjField *field);

/**
 * Tells where the key word of a record stands, a text.
 * @param type Field table of the type, not null.
 * @return Offset in the record in bytes; -1 for a type without one.
 */
QBOBJ_API int32_t qbobj_type_key_word(const QbobjField *type);
/** @} */

/**
 * The version of the library that runs, "1.0.0". Within a major version the rows of the tables keep their layout: what
 * there is to add about a type or an operation comes as a function, as the meanings above do.
 * @return A static text.
 */
QBOBJ_API const char *qbobj_version(void);

/**
 * The size of a row of the tables in the library that runs. What is compiled with this header knows it; a language
 * binding, which may find a newer library with longer rows, steps through the tables by it.
 * @param row Name of the row's structure: "QbobjField", "QbobjType", "QbobjArgument", "QbobjOperation", "QbobjCode" or
 *            "QbobjTraits".
 * @return Its size in bytes; 0 for null and for any other name.
 */
QBOBJ_API uint32_t qbobj_row_size(const char *row);

/** @name Category words of the system log */ /** @{ */
QBOBJ_API extern const char *const QBLOG_CATEGORY_SNAPSHOT; /**< "snapshot" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_MBACKUP;  /**< "mbackup" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_BACKUP;   /**< "backup" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_ACCOUNT;  /**< "account" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_SHARE;    /**< "share" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_VOLUME;   /**< "volume" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_DISK;     /**< "disk" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_SYSTEM;   /**< "system" */
QBOBJ_API extern const char *const QBLOG_CATEGORY_MISC;     /**< "misc" */
/** @} */

/** @name Severity words of the system log */ /** @{ */
QBOBJ_API extern const char *const QBLOG_SEVERITY_EMERG;   /**< "emerge", with the trailing e. */
QBOBJ_API extern const char *const QBLOG_SEVERITY_ALERT;   /**< "alert" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_CRIT;    /**< "crit" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_ERR;     /**< "err" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_WARNING; /**< "warning" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_NOTICE;  /**< "notice" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_INFO;    /**< "info" */
QBOBJ_API extern const char *const QBLOG_SEVERITY_DEBUG;   /**< "debug" */
/** @} */

/**
 * Eight U+25CF BLACK CIRCLE characters in UTF-8: stands for a stored password in what is returned,
 * and on input means that the stored value stays as it is.
 */
QBOBJ_API extern const char *const masked_password;

#ifdef __cplusplus
}
#endif

#endif
/* SPDX-License-Identifier: Apache-2.0 */
