/**
 * @file qbobj/services.h
 * Service-wide settings of the file protocols, Time Machine, TiVo, Coffer, home-folder options.
 */
#ifndef QBOBJ_SERVICES_H
#define QBOBJ_SERVICES_H

#include "qbobj/types.h"

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
    int32_t CapacityMB;    /**< Size in MB. */
    int32_t MaxCapacityMB; /**< Out: free space of the home volume in MB. */
    int32_t HomeEnabled;   /**< Not filled here. */
};

/** Settings of the Coffer service. */
struct Coffer {
    const char *Enabled;      /**< "1" when it is on. */
    const char *Volume;       /**< Volume of its working folder. */
    const char *Action;       /**< What to do: log in, log out, change. */
    const char *UserName;     /**< Account, an e-mail address. */
    const char *UserPassword; /**< Password of the account. */
    const char *DefaultJob;   /**< Default job. */
};

/** Service-wide SMB settings. */
struct CifsOptions {
    struct CifsOptions *next;                /**< Next element of the list, or null. */
    int32_t UserHomeDirectory;               /**< 1 serves home folders. */
    int32_t UserHomeDirectoryRecycle;        /**< 1 gives home folders a recycle bin. */
    int32_t UserHomeDirectoryRecycleMaxDays; /**< Days that a deleted file is kept. */
    int32_t UserHomeDirectoryRecycleMaxSize; /**< Largest size of the recycle bin in MB. */
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
    int32_t Port;                  /**< TCP port, 1 to 65535. */
    const char *AuthMode;          /**< "anonymous" or "user". */
    int32_t PassiveRangeMin;       /**< First passive port, 32768 to 65535. */
    int32_t PassiveRangeMax;       /**< Last passive port. */
    int32_t EnableMasquerade;      /**< 1 announces the address below. */
    const char *MasqueradeAddress; /**< Address or host name to announce. */
    int32_t AllowUploadResume;     /**< 1 lets uploads resume. */
    int32_t UserHomeDirectory;     /**< 1 serves home folders. */
    int32_t Ftps;                  /**< 1 offers TLS. */
    int32_t ForceFtps;             /**< 1 requires TLS. */
    int32_t ServerTransferLog;     /**< 1 logs transfers. */
    int32_t MaxUploadRate;         /**< KB per second, 0 to 99999; 0 for no limit. */
    int32_t MaxDownloadRate;       /**< KB per second, 0 to 99999; 0 for no limit. */
};

/** Service-wide DAAP settings. */
struct DaapOptions {
    const char *sharename; /**< Name that players see. */
    const char *password;  /**< Password of the library. */
    const char *directory; /**< Folder of the library. */
};

/** Service-wide NFS settings. */
struct NfsOptions {
    struct NfsOptions *next;   /**< Next element of the list, or null. */
    int32_t Changed;           /**< Raised when a write changed something. */
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
    int32_t Port;                   /**< TCP port. */
    int32_t PasswordAuthentication; /**< 1 allows log-in by password. */
};

/** Replication settings. */
struct ReplicateOptions {
    const char *Owner;    /**< Owner of the replication. */
    const char *PrivData; /**< What the replication keeps here. */
    const char *Password; /**< Password; not read back. */
};

/** HTTP settings. */
struct HttpOptions {
    int32_t LoginEnabled;  /**< 1 asks for a password. */
    const char *ShareName; /**< Share served as the home page. */
    int32_t HttpAdmin;     /**< 1 serves the administration pages. */
};

/** HTTPS settings. */
struct HttpsOptions {
    int32_t Port;           /**< Additional TCP port. */
    const char *SslKeyHost; /**< Host name or address in the certificate. */
};

/** A TiVo device. */
struct TIVOhostsAcl {
    struct TIVOhostsAcl *next; /**< Next element of the list, or null. */
    const char *name;          /**< Name of the device. */
    const char *status;        /**< State of the device. */
    const char *active;        /**< "true" or "false". */
};

/** Media access key of a TiVo device. */
struct TivoMak {
    const char *name;   /**< Name of the device. */
    const char *status; /**< State of the device. */
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
    const char *DLNAfolderlist;        /**< Paths of the shares served over DLNA. */
    const char *TIVOfolder;            /**< Folder of the archive. */
    const char *hour;                  /**< Hour of the schedule. */
    const char *minute;                /**< Minute of the schedule. */
    const char *days;                  /**< Days of the schedule. */
    struct TIVOhostsAcl *TIVOhostsAcl; /**< Devices. */
};

#ifdef __cplusplus
}
#endif

#endif
