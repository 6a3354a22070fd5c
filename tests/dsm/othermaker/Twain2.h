/* The TWAIN 2 interface on 64-bit Linux as another maker would write it down: plain C records,
 * packed to two bytes. Programs and libraries of this folder include this file and nothing of
 * Paperline, so that what they share with it is the published standard alone. */
#ifndef OTHERMAKER_TWAIN2_H
#define OTHERMAKER_TWAIN2_H

#include <stdint.h>

#pragma pack(push, 2)

typedef void* TW_HANDLE;
typedef void* TW_MEMREF;
typedef uint16_t TW_UINT16;
typedef uint32_t TW_UINT32;
typedef int16_t TW_INT16;
typedef int32_t TW_INT32;
typedef uint16_t TW_BOOL;
typedef uintptr_t TW_UINTPTR;
typedef char TW_STR32[34];
typedef char TW_STR255[256];

typedef struct {
    TW_INT16 Whole;
    TW_UINT16 Frac;
} TW_FIX32;

typedef struct {
    TW_UINT16 MajorNum, MinorNum, Language, Country;
    TW_STR32 Info;
} TW_VERSION;

typedef struct {
    TW_UINT32 Id;
    TW_VERSION Version;
    TW_UINT16 ProtocolMajor, ProtocolMinor;
    TW_UINT32 SupportedGroups;
    TW_STR32 Manufacturer, ProductFamily, ProductName;
} TW_IDENTITY;

typedef struct {
    TW_BOOL ShowUI, ModalUI;
    TW_HANDLE hParent;
} TW_USERINTERFACE;

typedef struct {
    TW_MEMREF CallBackProc;
    TW_UINT32 RefCon;
    TW_INT16 Message;
} TW_CALLBACK;

typedef struct {
    TW_MEMREF CallBackProc;
    TW_UINTPTR RefCon;
    TW_INT16 Message;
} TW_CALLBACK2;

typedef struct {
    TW_UINT16 ConditionCode, Data;
} TW_STATUS;

typedef struct {
    TW_MEMREF pEvent;
    TW_UINT16 TWMessage;
} TW_EVENT;

typedef struct {
    TW_UINT16 Cap, ConType;
    TW_HANDLE hContainer;
} TW_CAPABILITY;

typedef struct {
    TW_UINT16 ItemType;
    TW_UINT32 Item;
} TW_ONEVALUE;

typedef struct {
    TW_FIX32 XResolution, YResolution;
    TW_INT32 ImageWidth, ImageLength;
    TW_INT16 SamplesPerPixel, BitsPerSample[8], BitsPerPixel;
    TW_BOOL Planar;
    TW_INT16 PixelType;
    TW_UINT16 Compression;
} TW_IMAGEINFO;

typedef struct {
    TW_UINT32 Flags, Length;
    TW_MEMREF TheMem;
} TW_MEMORY;

typedef struct {
    TW_UINT16 Compression;
    TW_UINT32 BytesPerRow, Columns, Rows, XOffset, YOffset, BytesWritten;
    TW_MEMORY Memory;
} TW_IMAGEMEMXFER;

typedef struct {
    TW_UINT32 MinBufSize, MaxBufSize, Preferred;
} TW_SETUPMEMXFER;

typedef struct {
    TW_STR255 FileName;
    TW_UINT16 Format;
    TW_INT16 VRefNum;
} TW_SETUPFILEXFER;

typedef struct {
    TW_UINT16 Count;
    TW_UINT32 EOJ;
} TW_PENDINGXFERS;

typedef struct {
    TW_UINT16 InfoID, ItemType, NumItems, ReturnCode;
    TW_UINTPTR Item;
} TW_INFO;

typedef struct {
    TW_UINT32 NumInfos;
    TW_INFO Info[1];
} TW_EXTIMAGEINFO;

typedef TW_UINT16 (*DSMENTRYPROC)(
    TW_IDENTITY*, TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF);
typedef TW_UINT16 (*DSENTRYPROC)(TW_IDENTITY*, TW_UINT32, TW_UINT16, TW_UINT16, TW_MEMREF);

typedef struct {
    TW_UINT32 Size;
    DSMENTRYPROC DSM_Entry;
    TW_HANDLE (*DSM_MemAllocate)(TW_UINT32);
    void (*DSM_MemFree)(TW_HANDLE);
    TW_MEMREF (*DSM_MemLock)(TW_HANDLE);
    void (*DSM_MemUnlock)(TW_HANDLE);
} TW_ENTRYPOINT;

#pragma pack(pop)

enum { DG_CONTROL = 1, DG_IMAGE = 2 };
#define DF_DSM2 0x10000000u
#define DF_APP2 0x20000000u
#define DF_DS2 0x40000000u

enum {
    DAT_NULL = 0x0000,
    DAT_CAPABILITY = 0x0001,
    DAT_EVENT = 0x0002,
    DAT_IDENTITY = 0x0003,
    DAT_PARENT = 0x0004,
    DAT_PENDINGXFERS = 0x0005,
    DAT_SETUPMEMXFER = 0x0006,
    DAT_SETUPFILEXFER = 0x0007,
    DAT_STATUS = 0x0008,
    DAT_USERINTERFACE = 0x0009,
    DAT_CALLBACK = 0x0010,
    DAT_CALLBACK2 = 0x0012,
    DAT_IMAGEINFO = 0x0101,
    DAT_IMAGEMEMXFER = 0x0103,
    DAT_IMAGENATIVEXFER = 0x0104,
    DAT_IMAGEFILEXFER = 0x0105,
    DAT_EXTIMAGEINFO = 0x010b,
    DAT_ENTRYPOINT = 0x0403
};

enum {
    MSG_NULL = 0x0000,
    MSG_GET = 0x0001,
    MSG_GETCURRENT = 0x0002,
    MSG_GETDEFAULT = 0x0003,
    MSG_GETFIRST = 0x0004,
    MSG_GETNEXT = 0x0005,
    MSG_SET = 0x0006,
    MSG_RESET = 0x0007,
    MSG_XFERREADY = 0x0101,
    MSG_CLOSEDSREQ = 0x0102,
    MSG_CLOSEDSOK = 0x0103,
    MSG_DEVICEEVENT = 0x0104,
    MSG_OPENDSM = 0x0301,
    MSG_CLOSEDSM = 0x0302,
    MSG_OPENDS = 0x0401,
    MSG_CLOSEDS = 0x0402,
    MSG_USERSELECT = 0x0403,
    MSG_DISABLEDS = 0x0501,
    MSG_ENABLEDS = 0x0502,
    MSG_ENABLEDSUIONLY = 0x0503,
    MSG_PROCESSEVENT = 0x0601,
    MSG_ENDXFER = 0x0701,
    MSG_REGISTER_CALLBACK = 0x0902
};

enum {
    TWRC_SUCCESS = 0,
    TWRC_FAILURE = 1,
    TWRC_CHECKSTATUS = 2,
    TWRC_CANCEL = 3,
    TWRC_DSEVENT = 4,
    TWRC_NOTDSEVENT = 5,
    TWRC_XFERDONE = 6,
    TWRC_ENDOFLIST = 7
};

enum {
    TWCC_SUCCESS = 0,
    TWCC_BUMMER = 1,
    TWCC_NODS = 3,
    TWCC_MAXCONNECTIONS = 4,
    TWCC_OPERATIONERROR = 5,
    TWCC_BADPROTOCOL = 9,
    TWCC_BADVALUE = 10,
    TWCC_SEQERROR = 11,
    TWCC_BADDEST = 12
};

enum { TWON_ONEVALUE = 5, TWTY_UINT16 = 4, TWTY_BOOL = 6 };
enum { CAP_XFERCOUNT = 0x0001, ICAP_XFERMECH = 0x0103, CAP_INDICATORS = 0x100b };
enum { TWSX_NATIVE = 0, TWSX_FILE = 1, TWSX_MEMORY = 2 };
enum { TWMF_APPOWNS = 1, TWMF_POINTER = 8 };

#endif
