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

/** SnapshotRetentionRules. */
struct SnapshotRetentionRules {
    struct SnapshotRetentionRules *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t Type; /**< */
    int32_t Number; /**< */
    int32_t Lifetime; /**< */
};

/** CustomSnapshotManagement. */
struct CustomSnapshotManagement {
    struct CustomSnapshotManagement *next; /**< Next element of the list, or null. */
    int32_t resource_id; /**< */
    int32_t Enabled; /**< */
    struct SnapshotRetentionRules *SnapshotRetentionRules; /**< */
    const char *CustomSnapshotSchedule; /**< */
    int32_t NonEmptySnapshots; /**< */
};

/** Timemachine. */
struct Timemachine {
    int32_t Enabled; /**< */
    const char *UserName; /**< */
    const char *Password; /**< */
    int32_t CapacityMB; /**< */
    int32_t MaxCapacityMB; /**< */
    int32_t HomeEnabled; /**< */
};

/** Coffer. */
struct Coffer {
    const char *Enabled; /**< */
    const char *Volume; /**< */
    const char *Action; /**< */
    const char *UserName; /**< */
    const char *UserPassword; /**< */
    const char *DefaultJob; /**< */
};

/** CifsOptions. */
struct CifsOptions {
    struct CifsOptions *next; /**< Next element of the list, or null. */
    int32_t UserHomeDirectory; /**< */
    int32_t UserHomeDirectoryRecycle; /**< */
    int32_t UserHomeDirectoryRecycleMaxDays; /**< */
    int32_t UserHomeDirectoryRecycleMaxSize; /**< */
};

/** BonjourOptions. */
struct BonjourOptions {
    int32_t CifsEnabled; /**< */
    int32_t AfpEnabled; /**< */
    int32_t GlassdeckEnabled; /**< */
    int32_t PrinterEnabled; /**< */
    int32_t QuillboxEnabled; /**< */
    int32_t TimemachineEnabled; /**< */
};

/** FtpOptions. */
struct FtpOptions {
    int32_t Port; /**< */
    const char *AuthMode; /**< */
    int32_t PassiveRangeMin; /**< */
    int32_t PassiveRangeMax; /**< */
    int32_t EnableMasquerade; /**< */
    const char *MasqueradeAddress; /**< */
    int32_t AllowUploadResume; /**< */
    int32_t UserHomeDirectory; /**< */
    int32_t Ftps; /**< */
    int32_t ForceFtps; /**< */
    int32_t ServerTransferLog; /**< */
    int32_t MaxUploadRate; /**< */
    int32_t MaxDownloadRate; /**< */
};

/** DaapOptions. */
struct DaapOptions {
    const char *sharename; /**< */
    const char *password; /**< */
    const char *directory; /**< */
};

/** NfsOptions. */
struct NfsOptions {
    struct NfsOptions *next; /**< Next element of the list, or null. */
    int32_t Changed; /**< */
    int32_t Threads; /**< */
    int32_t UserHomeDirectory; /**< */
    int32_t NfsV4Enable; /**< */
    const char *NfsV4Domain; /**< */
};

/** DlnaOptions. */
struct DlnaOptions {
    int32_t AutoScan; /**< */
    int32_t EnableTivoServer; /**< */
    int32_t EnableTivoArchiver; /**< */
};

/** SnmpOptions. */
struct SnmpOptions {
    const char *AllowHost; /**< */
    const char *Community; /**< */
    const char *TrapDestination; /**< */
};

/** SshOptions. */
struct SshOptions {
    int32_t Port; /**< */
    int32_t PasswordAuthentication; /**< */
};

/** ReplicateOptions. */
struct ReplicateOptions {
    const char *Owner; /**< */
    const char *PrivData; /**< */
    const char *Password; /**< */
};

/** HttpOptions. */
struct HttpOptions {
    int32_t LoginEnabled; /**< */
    const char *ShareName; /**< */
    int32_t HttpAdmin; /**< */
};

/** HttpsOptions. */
struct HttpsOptions {
    int32_t Port; /**< */
    const char *SslKeyHost; /**< */
};

/** TIVOhostsAcl. */
struct TIVOhostsAcl {
    struct TIVOhostsAcl *next; /**< Next element of the list, or null. */
    const char *name; /**< */
    const char *status; /**< */
    const char *active; /**< */
};

/** TivoMak. */
struct TivoMak {
    const char *name; /**< */
    const char *status; /**< */
    const char *key; /**< */
};

/** HomeFolderOptions. */
struct HomeFolderOptions {
    int32_t UserHomeDirectory; /**< */
    int32_t NfsUserHomeDirectory; /**< */
    int32_t FtpUserHomeDirectory; /**< */
    int32_t DlnaUserHomeDirectory; /**< */
    int32_t AfpUserHomeDirectory; /**< */
    struct CustomSnapshotManagement *CustomSnapshotManagement; /**< */
};

/** Protocol. */
struct Protocol {
    struct Protocol *next; /**< Next element of the list, or null. */
    const char *key; /**< Key word: the text by which the element is addressed. */
    const char *ProtocolId; /**< */
    const char *ProtocolName; /**< */
    int32_t Enabled; /**< */
    int32_t Changed; /**< */
    struct CifsOptions *CifsOptions; /**< */
    struct NfsOptions *NfsOptions; /**< */
    struct FtpOptions *FtpOptions; /**< */
    struct DlnaOptions *DlnaOptions; /**< */
    struct BonjourOptions *BonjourOptions; /**< */
    struct SnmpOptions *SnmpOptions; /**< */
    struct SshOptions *SshOptions; /**< */
    struct ReplicateOptions *ReplicateOptions; /**< */
    struct HttpOptions *HttpOptions; /**< */
    struct HttpsOptions *HttpsOptions; /**< */
    struct DaapOptions *DaapOptions; /**< */
};

/** ProtocolCollection. */
struct ProtocolCollection {
    struct Protocol *Protocol; /**< */
};

/** TivoOptions. */
struct TivoOptions {
    const char *DLNAfolderlist; /**< */
    const char *TIVOfolder; /**< */
    const char *hour; /**< */
    const char *minute; /**< */
    const char *days; /**< */
    struct TIVOhostsAcl *TIVOhostsAcl; /**< */
};

/* Operations. */

#ifdef __cplusplus
}
#endif

#endif
