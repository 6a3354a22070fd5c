// Records of the standard TWAIN interface on 64-bit Linux: packed to 2 bytes, identities 32 bits
// wide, strings of 34 bytes that end in a zero byte. The data source manager and the data sources
// speak this layout; the application's own layout is in twain/records/TwainTypes.h.
#pragma once

#include "twain/records/TwainConstants.h"

#include <cstddef>
#include <cstdint>

namespace twain::abi {

using Str32 = char[34];
using Str255 = char[256];
using Handle = void*;

#pragma pack(push, 2)

struct Fix32 {
    int16_t Whole;
    uint16_t Frac; // 65536ths
};

struct Frame {
    Fix32 Left, Top, Right, Bottom;
};

struct Version {
    uint16_t MajorNum;
    uint16_t MinorNum;
    uint16_t Language;
    uint16_t Country;
    Str32 Info;
};

struct Identity {
    uint32_t Id;
    abi::Version Version;
    uint16_t ProtocolMajor;
    uint16_t ProtocolMinor;
    uint32_t SupportedGroups;
    Str32 Manufacturer;
    Str32 ProductFamily;
    Str32 ProductName;
};

struct UserInterface {
    uint16_t ShowUI;
    uint16_t ModalUI;
    Handle hParent;
};

struct Callback {
    void* CallBackProc;
    uint32_t RefCon;
    int16_t Message;
};

struct Callback2 {
    void* CallBackProc;
    uintptr_t RefCon;
    int16_t Message;
};

struct Status {
    uint16_t ConditionCode;
    uint16_t Data;
};

struct StatusUtf8 {
    abi::Status Status; // as DAT_STATUS gave it
    uint32_t Size;      // bytes of the text, its zero byte included
    Handle UTF8string;  // the application frees it
};

struct Event {
    void* pEvent;
    uint16_t TWMessage;
};

struct Capability {
    uint16_t Cap;
    uint16_t ConType;
    Handle hContainer;
};

struct OneValue {
    uint16_t ItemType;
    uint32_t Item;
};

struct Range {
    uint16_t ItemType;
    uint32_t MinValue, MaxValue, StepSize, DefaultValue, CurrentValue;
};

struct EnumerationHeader { // the items follow
    uint16_t ItemType;
    uint32_t NumItems, CurrentIndex, DefaultIndex;
};

struct ArrayHeader { // the items follow
    uint16_t ItemType;
    uint32_t NumItems;
};

struct ImageInfo {
    Fix32 XResolution, YResolution;
    int32_t ImageWidth, ImageLength;
    int16_t SamplesPerPixel;
    int16_t BitsPerSample[8];
    int16_t BitsPerPixel;
    uint16_t Planar;
    int16_t PixelType;
    uint16_t Compression;
};

struct ImageLayout {
    abi::Frame Frame;
    uint32_t DocumentNumber, PageNumber, FrameNumber;
};

struct Memory {
    uint32_t Flags;
    uint32_t Length;
    void* TheMem;
};

struct ImageMemXfer {
    uint16_t Compression;
    uint32_t BytesPerRow, Columns, Rows, XOffset, YOffset, BytesWritten;
    abi::Memory Memory;
};

struct SetupMemXfer {
    uint32_t MinBufSize, MaxBufSize, Preferred;
};

struct SetupFileXfer {
    Str255 FileName;
    uint16_t Format;
    int16_t VRefNum;
};

struct PendingXfers {
    uint16_t Count; // 65535: unknown, at least one more
    uint32_t EOJ;
};

struct Info {
    uint16_t InfoID, ItemType, NumItems, ReturnCode;
    uintptr_t Item;
};

struct ExtImageInfoHeader { // NumInfos records of Info follow
    uint32_t NumInfos;
};

using MemAllocate = Handle (*)(uint32_t bytes);
using MemFree = void (*)(Handle);
using MemLock = void* (*)(Handle);
using MemUnlock = void (*)(Handle);

using EntryFunction = uint16_t (*)(Identity* origin,
                                   Identity* destination,
                                   uint32_t dataGroup,
                                   uint16_t dataArgumentType,
                                   uint16_t message,
                                   void* data);

// A data source's entry has no destination: it is the destination.
using SourceEntryFunction = uint16_t (*)(
    Identity* origin, uint32_t dataGroup, uint16_t dataArgumentType, uint16_t message, void* data);

struct EntryPoint {
    uint32_t Size;
    EntryFunction DSM_Entry;
    MemAllocate DSM_MemAllocate;
    MemFree DSM_MemFree;
    MemLock DSM_MemLock;
    MemUnlock DSM_MemUnlock;
};

#pragma pack(pop)

static_assert(sizeof(Fix32) == 4);
static_assert(sizeof(Frame) == 16);
static_assert(sizeof(Version) == 42);
static_assert(offsetof(Version, Info) == 8);
static_assert(sizeof(Identity) == 156);
static_assert(offsetof(Identity, Version) == 4);
static_assert(offsetof(Identity, ProtocolMajor) == 46);
static_assert(offsetof(Identity, ProtocolMinor) == 48);
static_assert(offsetof(Identity, SupportedGroups) == 50);
static_assert(offsetof(Identity, Manufacturer) == 54);
static_assert(offsetof(Identity, ProductFamily) == 88);
static_assert(offsetof(Identity, ProductName) == 122);
static_assert(sizeof(UserInterface) == 12);
static_assert(offsetof(UserInterface, hParent) == 4);
static_assert(sizeof(Callback) == 14);
static_assert(offsetof(Callback, RefCon) == 8);
static_assert(offsetof(Callback, Message) == 12);
static_assert(sizeof(Callback2) == 18);
static_assert(offsetof(Callback2, Message) == 16);
static_assert(sizeof(Status) == 4);
static_assert(sizeof(StatusUtf8) == 16);
static_assert(offsetof(StatusUtf8, UTF8string) == 8);
static_assert(sizeof(Event) == 10);
static_assert(sizeof(Capability) == 12);
static_assert(offsetof(Capability, hContainer) == 4);
static_assert(sizeof(OneValue) == 6);
static_assert(offsetof(OneValue, Item) == 2);
static_assert(sizeof(Range) == 22);
static_assert(sizeof(EnumerationHeader) == 14);
static_assert(sizeof(ArrayHeader) == 6);
static_assert(sizeof(ImageInfo) == 42);
static_assert(offsetof(ImageInfo, ImageWidth) == 8);
static_assert(offsetof(ImageInfo, SamplesPerPixel) == 16);
static_assert(offsetof(ImageInfo, BitsPerPixel) == 34);
static_assert(offsetof(ImageInfo, Compression) == 40);
static_assert(sizeof(ImageLayout) == 28);
static_assert(sizeof(Memory) == 16);
static_assert(sizeof(ImageMemXfer) == 42);
static_assert(offsetof(ImageMemXfer, BytesPerRow) == 2);
static_assert(offsetof(ImageMemXfer, BytesWritten) == 22);
static_assert(offsetof(ImageMemXfer, Memory) == 26);
static_assert(sizeof(SetupMemXfer) == 12);
static_assert(sizeof(SetupFileXfer) == 260);
static_assert(sizeof(PendingXfers) == 6);
static_assert(offsetof(PendingXfers, EOJ) == 2);
static_assert(sizeof(Info) == 16);
static_assert(sizeof(ExtImageInfoHeader) == 4);
static_assert(sizeof(EntryPoint) == 44);
static_assert(offsetof(EntryPoint, DSM_Entry) == 4);

} // namespace twain::abi
