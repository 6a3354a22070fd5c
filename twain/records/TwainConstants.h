// Numbers of the published TWAIN 2.x standard that the application and its data sources use.
// They are the same on every platform; only the layout of the records differs.
#pragma once

#include <cstdint>

namespace twain {

// Data groups.
inline constexpr uint32_t DG_CONTROL = 0x0001;
inline constexpr uint32_t DG_IMAGE = 0x0002;
inline constexpr uint32_t DG_AUDIO = 0x0004;
inline constexpr uint32_t DF_DSM2 = 0x10000000; // the data source manager has the 2.x entry points
inline constexpr uint32_t DF_APP2 = 0x20000000;
inline constexpr uint32_t DF_DS2 = 0x40000000;

// Data argument types.
inline constexpr uint16_t DAT_NULL = 0x0000;
inline constexpr uint16_t DAT_CAPABILITY = 0x0001;
inline constexpr uint16_t DAT_EVENT = 0x0002;
inline constexpr uint16_t DAT_IDENTITY = 0x0003;
inline constexpr uint16_t DAT_PARENT = 0x0004;
inline constexpr uint16_t DAT_PENDINGXFERS = 0x0005;
inline constexpr uint16_t DAT_SETUPMEMXFER = 0x0006;
inline constexpr uint16_t DAT_SETUPFILEXFER = 0x0007;
inline constexpr uint16_t DAT_STATUS = 0x0008;
inline constexpr uint16_t DAT_USERINTERFACE = 0x0009;
inline constexpr uint16_t DAT_XFERGROUP = 0x000a;
inline constexpr uint16_t DAT_CUSTOMDSDATA = 0x000c;
inline constexpr uint16_t DAT_DEVICEEVENT = 0x000d;
inline constexpr uint16_t DAT_CALLBACK = 0x0010;
inline constexpr uint16_t DAT_STATUSUTF8 = 0x0011;
inline constexpr uint16_t DAT_CALLBACK2 = 0x0012;
inline constexpr uint16_t DAT_IMAGEINFO = 0x0101;
inline constexpr uint16_t DAT_IMAGELAYOUT = 0x0102;
inline constexpr uint16_t DAT_IMAGEMEMXFER = 0x0103;
inline constexpr uint16_t DAT_IMAGENATIVEXFER = 0x0104;
inline constexpr uint16_t DAT_IMAGEFILEXFER = 0x0105;
inline constexpr uint16_t DAT_EXTIMAGEINFO = 0x010b;
inline constexpr uint16_t DAT_ENTRYPOINT = 0x0403;

// Messages.
inline constexpr uint16_t MSG_NULL = 0x0000;
inline constexpr uint16_t MSG_GET = 0x0001;
inline constexpr uint16_t MSG_GETCURRENT = 0x0002;
inline constexpr uint16_t MSG_GETDEFAULT = 0x0003;
inline constexpr uint16_t MSG_GETFIRST = 0x0004;
inline constexpr uint16_t MSG_GETNEXT = 0x0005;
inline constexpr uint16_t MSG_SET = 0x0006;
inline constexpr uint16_t MSG_RESET = 0x0007;
inline constexpr uint16_t MSG_QUERYSUPPORT = 0x0008;
inline constexpr uint16_t MSG_XFERREADY = 0x0101;
inline constexpr uint16_t MSG_CLOSEDSREQ = 0x0102;
inline constexpr uint16_t MSG_CLOSEDSOK = 0x0103;
inline constexpr uint16_t MSG_DEVICEEVENT = 0x0104;
inline constexpr uint16_t MSG_OPENDSM = 0x0301;
inline constexpr uint16_t MSG_CLOSEDSM = 0x0302;
inline constexpr uint16_t MSG_OPENDS = 0x0401;
inline constexpr uint16_t MSG_CLOSEDS = 0x0402;
inline constexpr uint16_t MSG_USERSELECT = 0x0403;
inline constexpr uint16_t MSG_DISABLEDS = 0x0501;
inline constexpr uint16_t MSG_ENABLEDS = 0x0502;
inline constexpr uint16_t MSG_ENABLEDSUIONLY = 0x0503;
inline constexpr uint16_t MSG_PROCESSEVENT = 0x0601;
inline constexpr uint16_t MSG_ENDXFER = 0x0701;
inline constexpr uint16_t MSG_STOPFEEDER = 0x0702;
inline constexpr uint16_t MSG_REGISTER_CALLBACK = 0x0902;
inline constexpr uint16_t MSG_RESETALL = 0x0a01;

// Return codes.
inline constexpr uint16_t TWRC_SUCCESS = 0;
inline constexpr uint16_t TWRC_FAILURE = 1;
inline constexpr uint16_t TWRC_CHECKSTATUS = 2;
inline constexpr uint16_t TWRC_CANCEL = 3;
inline constexpr uint16_t TWRC_DSEVENT = 4;
inline constexpr uint16_t TWRC_NOTDSEVENT = 5;
inline constexpr uint16_t TWRC_XFERDONE = 6;
inline constexpr uint16_t TWRC_ENDOFLIST = 7;
inline constexpr uint16_t TWRC_INFONOTSUPPORTED = 8;
inline constexpr uint16_t TWRC_DATANOTAVAILABLE = 9;
inline constexpr uint16_t TWRC_BUSY = 10;
inline constexpr uint16_t TWRC_SCANNERLOCKED = 11;

// Condition codes.
inline constexpr uint16_t TWCC_SUCCESS = 0;
inline constexpr uint16_t TWCC_BUMMER = 1;
inline constexpr uint16_t TWCC_LOWMEMORY = 2;
inline constexpr uint16_t TWCC_NODS = 3;
inline constexpr uint16_t TWCC_MAXCONNECTIONS = 4;
inline constexpr uint16_t TWCC_OPERATIONERROR = 5;
inline constexpr uint16_t TWCC_BADCAP = 6;
inline constexpr uint16_t TWCC_BADPROTOCOL = 9;
inline constexpr uint16_t TWCC_BADVALUE = 10;
inline constexpr uint16_t TWCC_SEQERROR = 11;
inline constexpr uint16_t TWCC_BADDEST = 12;
inline constexpr uint16_t TWCC_CAPUNSUPPORTED = 13;
inline constexpr uint16_t TWCC_CAPBADOPERATION = 14;
inline constexpr uint16_t TWCC_CAPSEQERROR = 15;
inline constexpr uint16_t TWCC_DENIED = 16;
inline constexpr uint16_t TWCC_PAPERJAM = 20;
inline constexpr uint16_t TWCC_PAPERDOUBLEFEED = 21;
inline constexpr uint16_t TWCC_FILEWRITEERROR = 22;
inline constexpr uint16_t TWCC_CHECKDEVICEONLINE = 23;
inline constexpr uint16_t TWCC_INTERLOCK = 24;
inline constexpr uint16_t TWCC_DAMAGEDCORNER = 25;
inline constexpr uint16_t TWCC_NOMEDIA = 29;
inline constexpr uint16_t TWCC_CUSTOMBASE = 0x8000;
// Of our own sources: the device's worker gave no answer in time and was ended.
inline constexpr uint16_t conditionWorkerHung = TWCC_CUSTOMBASE + 1;

// Container types and the value that says "not asked for".
inline constexpr uint16_t TWON_ARRAY = 3;
inline constexpr uint16_t TWON_ENUMERATION = 4;
inline constexpr uint16_t TWON_ONEVALUE = 5;
inline constexpr uint16_t TWON_RANGE = 6;
inline constexpr uint16_t TWON_DONTCARE16 = 0xffff;
inline constexpr uint32_t TWON_DONTCARE32 = 0xffffffff;

// Item types.
inline constexpr uint16_t TWTY_INT8 = 0;
inline constexpr uint16_t TWTY_INT16 = 1;
inline constexpr uint16_t TWTY_INT32 = 2;
inline constexpr uint16_t TWTY_UINT8 = 3;
inline constexpr uint16_t TWTY_UINT16 = 4;
inline constexpr uint16_t TWTY_UINT32 = 5;
inline constexpr uint16_t TWTY_BOOL = 6;
inline constexpr uint16_t TWTY_FIX32 = 7;
inline constexpr uint16_t TWTY_FRAME = 8;
inline constexpr uint16_t TWTY_STR32 = 9;
inline constexpr uint16_t TWTY_STR64 = 10;
inline constexpr uint16_t TWTY_STR128 = 11;
inline constexpr uint16_t TWTY_STR255 = 12;
inline constexpr uint16_t TWTY_HANDLE = 15;

// Bytes of one item of a container: of the types 0 to 12, 0 for all others.
constexpr uint32_t capabilityItemSize(uint16_t itemType) {
    constexpr uint32_t sizes[]{1, 2, 4, 1, 2, 4, 2, 4, 16, 34, 66, 130, 256};
    return itemType <= TWTY_STR255 ? sizes[itemType] : 0;
}

// Memory flags of a transfer buffer.
inline constexpr uint32_t TWMF_APPOWNS = 0x1;
inline constexpr uint32_t TWMF_DSMOWNS = 0x2;
inline constexpr uint32_t TWMF_DSOWNS = 0x4;
inline constexpr uint32_t TWMF_POINTER = 0x8;
inline constexpr uint32_t TWMF_HANDLE = 0x10;

// Pixel types, pixel flavours, compressions, units, transfer mechanisms, file formats.
inline constexpr int16_t TWPT_BW = 0;
inline constexpr int16_t TWPT_GRAY = 1;
inline constexpr int16_t TWPT_RGB = 2;
inline constexpr uint16_t TWPF_CHOCOLATE = 0; // a zero bit is black
inline constexpr uint16_t TWPF_VANILLA = 1;
inline constexpr uint16_t TWCP_NONE = 0;
inline constexpr uint16_t TWUN_INCHES = 0;
inline constexpr uint16_t TWUN_CENTIMETERS = 1;
inline constexpr uint16_t TWUN_PIXELS = 5;
inline constexpr uint16_t TWSX_NATIVE = 0;
inline constexpr uint16_t TWSX_FILE = 1;
inline constexpr uint16_t TWSX_MEMORY = 2;
inline constexpr uint16_t TWFF_TIFF = 0;
inline constexpr uint16_t TWFF_BMP = 2;
inline constexpr uint16_t TWBO_MSBFIRST = 1;
inline constexpr uint16_t TWPC_CHUNKY = 0;

// Extended image information.
inline constexpr uint16_t TWEI_BARCODETEXT = 0x1202;

// What MSG_QUERYSUPPORT answers for a capability.
inline constexpr uint32_t TWQC_GET = 0x0001;
inline constexpr uint32_t TWQC_SET = 0x0002;
inline constexpr uint32_t TWQC_GETDEFAULT = 0x0004;
inline constexpr uint32_t TWQC_GETCURRENT = 0x0008;
inline constexpr uint32_t TWQC_RESET = 0x0010;

// Languages and countries.
inline constexpr uint16_t TWLG_USA = 13;
inline constexpr uint16_t TWCY_USA = 1;

// Capabilities that our data sources offer.
inline constexpr uint16_t CAP_XFERCOUNT = 0x0001;
inline constexpr uint16_t ICAP_COMPRESSION = 0x0100;
inline constexpr uint16_t ICAP_PIXELTYPE = 0x0101;
inline constexpr uint16_t ICAP_UNITS = 0x0102;
inline constexpr uint16_t ICAP_XFERMECH = 0x0103;
inline constexpr uint16_t CAP_FEEDERENABLED = 0x1002;
inline constexpr uint16_t CAP_FEEDERLOADED = 0x1003;
inline constexpr uint16_t CAP_SUPPORTEDCAPS = 0x1005;
inline constexpr uint16_t CAP_AUTOFEED = 0x1007;
inline constexpr uint16_t CAP_INDICATORS = 0x100b;
inline constexpr uint16_t CAP_PAPERDETECTABLE = 0x100d;
inline constexpr uint16_t CAP_UICONTROLLABLE = 0x100e;
inline constexpr uint16_t CAP_DEVICEONLINE = 0x100f;
inline constexpr uint16_t CAP_ENABLEDSUIONLY = 0x1014;
inline constexpr uint16_t ICAP_BITDEPTH = 0x112b;
inline constexpr uint16_t ICAP_BITORDER = 0x111c;
inline constexpr uint16_t ICAP_PHYSICALWIDTH = 0x1111;
inline constexpr uint16_t ICAP_PHYSICALHEIGHT = 0x1112;
inline constexpr uint16_t ICAP_PIXELFLAVOR = 0x111f;
inline constexpr uint16_t ICAP_PLANARCHUNKY = 0x1120;
inline constexpr uint16_t ICAP_IMAGEFILEFORMAT = 0x110c;
inline constexpr uint16_t ICAP_XRESOLUTION = 0x1118;
inline constexpr uint16_t ICAP_YRESOLUTION = 0x1119;
inline constexpr uint16_t ICAP_XNATIVERESOLUTION = 0x1116;
inline constexpr uint16_t ICAP_YNATIVERESOLUTION = 0x1117;

} // namespace twain
