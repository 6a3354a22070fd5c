#include "sources/framework/StatusCodes.h"

#include "twain/records/TwainConstants.h"

namespace paperline::sources {

TwainResult twainResult(ScanStatus status) {
    using namespace twain;
    switch (status) {
    case ScanStatus::good:
        return {TWRC_SUCCESS, TWCC_SUCCESS};
    case ScanStatus::cancelled:
        return {TWRC_CANCEL, TWCC_SUCCESS};
    case ScanStatus::noMorePages:
        return {TWRC_FAILURE, TWCC_NOMEDIA};
    case ScanStatus::deviceBusy:
        return {TWRC_FAILURE, TWCC_MAXCONNECTIONS};
    case ScanStatus::paperJam:
        return {TWRC_FAILURE, TWCC_PAPERJAM};
    case ScanStatus::coverOpen:
        return {TWRC_FAILURE, TWCC_INTERLOCK};
    case ScanStatus::invalid:
    case ScanStatus::unsupported:
        return {TWRC_FAILURE, TWCC_BADVALUE};
    case ScanStatus::ioError:
    case ScanStatus::noSuchDevice:
        return {TWRC_FAILURE, TWCC_CHECKDEVICEONLINE};
    case ScanStatus::noMemory:
        return {TWRC_FAILURE, TWCC_LOWMEMORY};
    case ScanStatus::accessDenied:
        return {TWRC_FAILURE, TWCC_DENIED};
    case ScanStatus::workerDied:
        return {TWRC_FAILURE, TWCC_OPERATIONERROR};
    case ScanStatus::workerHung:
        return {TWRC_FAILURE, conditionWorkerHung};
    }
    return {TWRC_FAILURE, TWCC_BUMMER};
}

const char* conditionText(uint16_t conditionCode) {
    using namespace twain;
    switch (conditionCode) {
    case TWCC_SUCCESS:
        return "No error";
    case TWCC_LOWMEMORY:
        return "Not enough memory";
    case TWCC_MAXCONNECTIONS:
        return "The device is in use";
    case TWCC_OPERATIONERROR:
        return "The device failed";
    case TWCC_BADPROTOCOL:
        return "The request is not supported";
    case TWCC_BADVALUE:
        return "A value is out of range";
    case TWCC_SEQERROR:
        return "The request came at the wrong time";
    case TWCC_BADDEST:
        return "The request went to another source";
    case TWCC_CAPUNSUPPORTED:
        return "The capability is not supported";
    case TWCC_CAPBADOPERATION:
        return "The capability cannot be changed this way";
    case TWCC_DENIED:
        return "Access to the device is denied";
    case TWCC_PAPERJAM:
        return "Paper jam";
    case TWCC_FILEWRITEERROR:
        return "The file cannot be written";
    case TWCC_CHECKDEVICEONLINE:
        return "The device does not answer; check that it is on and connected";
    case TWCC_INTERLOCK:
        return "A cover of the device is open";
    case TWCC_NOMEDIA:
        return "There is no paper in the feeder";
    case TWCC_NODS:
        return "The data source is gone";
    case conditionWorkerHung:
        return "The device did not answer in time";
    default:
        return "The operation failed";
    }
}

} // namespace paperline::sources
