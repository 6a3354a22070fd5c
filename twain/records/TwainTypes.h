// The application's own TWAIN records: natural alignment, identities 64 bits wide, strings of 34
// bytes with a length byte in front. twain/manager/DataSourceManager converts them to and from the
// standard Linux layout of twain/records/StandardRecords.h.
#pragma once

#include "twain/records/TwainConstants.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

using TW_UINT16 = uint16_t;
using TW_UINT32 = uint32_t;
using TW_INT16 = int16_t;
using TW_INT32 = int32_t;
using TW_BOOL = uint16_t;
using TW_HANDLE = void*;
using TW_MEMREF = void*;

// A length byte followed by at most 33 bytes of text.
struct TW_STR32 {
    std::array<uint8_t, 34> bytes;

    static TW_STR32 from(std::string_view text); // cut to whole UTF-8 characters within 33 bytes
    std::string text() const;                    // a length byte above 33 counts as 33
    bool operator==(const TW_STR32&) const = default;
};

struct TW_FIX32 {
    int16_t Whole;
    uint16_t Frac;
};

struct TW_VERSION {
    uint16_t MajorNum;
    uint16_t MinorNum;
    uint16_t Language;
    uint16_t Country;
    TW_STR32 Info;
};

struct TW_IDENTITY {
    uint64_t Id;
    TW_VERSION Version;
    uint16_t ProtocolMajor;
    uint16_t ProtocolMinor;
    uint32_t SupportedGroups;
    TW_STR32 Manufacturer;
    TW_STR32 ProductFamily;
    TW_STR32 ProductName;
};

struct TW_USERINTERFACE {
    TW_BOOL ShowUI;
    TW_BOOL ModalUI;
    TW_HANDLE hParent;
};

struct TW_CALLBACK {
    void* CallBackProc;
    uint64_t RefCon;
    uint16_t Message;
};

struct TW_IMAGEINFO {
    TW_FIX32 XResolution;
    TW_FIX32 YResolution;
    int32_t ImageWidth;
    int32_t ImageLength;
    int16_t SamplesPerPixel;
    int16_t BitsPerSample[8];
    int16_t BitsPerPixel;
    TW_BOOL Planar;
    int16_t PixelType;
    uint16_t Compression;
};

struct TW_MEMORY {
    uint32_t Flags;
    uint32_t Length;
    TW_MEMREF TheMem;
};

struct TW_IMAGEMEMXFER {
    uint16_t Compression;
    uint32_t BytesPerRow;
    uint32_t Columns;
    uint32_t Rows;
    uint32_t XOffset;
    uint32_t YOffset;
    uint32_t BytesWritten;
    TW_MEMORY Memory;
};

struct TW_SETUPMEMXFER {
    uint32_t MinBufSize;
    uint32_t MaxBufSize;
    uint32_t Preferred;
};

struct TW_SETUPFILEXFER {
    std::array<uint8_t, 256> FileName; // a length byte followed by at most 255 bytes
    uint16_t Format;
    int16_t VRefNum;
};

struct TW_PENDINGXFERS {
    uint16_t Count;
    uint32_t EOJ;
};

struct TW_STATUS {
    uint16_t ConditionCode;
    uint16_t Reserved;
};

struct TW_INFO {
    uint16_t InfoID;
    uint16_t ItemType;
    uint16_t NumItems;
    uint16_t CondCode;
    uint64_t Item;
};

struct TW_EXTIMAGEINFO { // room for one record; more may follow
    uint32_t NumInfos;
    TW_INFO Info[1];
};

static_assert(sizeof(TW_STR32) == 34);
static_assert(sizeof(TW_VERSION) == 42);
static_assert(sizeof(TW_IDENTITY) == 168);
static_assert(offsetof(TW_IDENTITY, Version) == 8);
static_assert(offsetof(TW_IDENTITY, ProtocolMajor) == 50);
static_assert(offsetof(TW_IDENTITY, ProtocolMinor) == 52);
static_assert(offsetof(TW_IDENTITY, SupportedGroups) == 56);
static_assert(offsetof(TW_IDENTITY, Manufacturer) == 60);
static_assert(offsetof(TW_IDENTITY, ProductFamily) == 94);
static_assert(offsetof(TW_IDENTITY, ProductName) == 128);
static_assert(sizeof(TW_USERINTERFACE) == 16);
static_assert(offsetof(TW_USERINTERFACE, hParent) == 8);
static_assert(sizeof(TW_CALLBACK) == 24);
static_assert(offsetof(TW_CALLBACK, RefCon) == 8);
static_assert(offsetof(TW_CALLBACK, Message) == 16);
static_assert(sizeof(TW_IMAGEINFO) == 44);
static_assert(offsetof(TW_IMAGEINFO, ImageWidth) == 8);
static_assert(offsetof(TW_IMAGEINFO, BitsPerPixel) == 34);
static_assert(offsetof(TW_IMAGEINFO, Compression) == 40);
static_assert(sizeof(TW_MEMORY) == 16);
static_assert(sizeof(TW_IMAGEMEMXFER) == 48);
static_assert(offsetof(TW_IMAGEMEMXFER, BytesPerRow) == 4);
static_assert(offsetof(TW_IMAGEMEMXFER, BytesWritten) == 24);
static_assert(offsetof(TW_IMAGEMEMXFER, Memory) == 32);
static_assert(sizeof(TW_SETUPMEMXFER) == 12);
static_assert(sizeof(TW_SETUPFILEXFER) == 260);
static_assert(sizeof(TW_PENDINGXFERS) == 8);
static_assert(offsetof(TW_PENDINGXFERS, EOJ) == 4);
static_assert(sizeof(TW_STATUS) == 4);
static_assert(sizeof(TW_INFO) == 16);
static_assert(sizeof(TW_EXTIMAGEINFO) == 24);
