// Converts the application's TWAIN records to the standard's 64-bit Linux layout and back. Texts
// with a length byte become zero-terminated; texts that are too long for their field are cut.
#pragma once

#include "twain/records/StandardRecords.h"
#include "twain/records/TwainTypes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace paperline {

twain::abi::Identity toStandard(const TW_IDENTITY& record); // Id: the low 32 bits
TW_IDENTITY fromStandard(const twain::abi::Identity& record);

twain::abi::UserInterface toStandard(const TW_USERINTERFACE& record);
TW_USERINTERFACE fromStandard(const twain::abi::UserInterface& record);

twain::abi::ImageInfo toStandard(const TW_IMAGEINFO& record);
TW_IMAGEINFO fromStandard(const twain::abi::ImageInfo& record);

twain::abi::SetupMemXfer toStandard(const TW_SETUPMEMXFER& record);
TW_SETUPMEMXFER fromStandard(const twain::abi::SetupMemXfer& record);

twain::abi::ImageMemXfer toStandard(const TW_IMAGEMEMXFER& record); // the buffer is not copied
TW_IMAGEMEMXFER fromStandard(const twain::abi::ImageMemXfer& record);

twain::abi::SetupFileXfer toStandard(const TW_SETUPFILEXFER& record);
TW_SETUPFILEXFER fromStandard(const twain::abi::SetupFileXfer& record);

twain::abi::PendingXfers toStandard(const TW_PENDINGXFERS& record);
TW_PENDINGXFERS fromStandard(const twain::abi::PendingXfers& record);

twain::abi::Status toStandard(const TW_STATUS& record);
TW_STATUS fromStandard(const twain::abi::Status& record);

// The count followed by as many records; nothing for more than 4096.
std::optional<std::vector<uint8_t>> toStandard(const TW_EXTIMAGEINFO& record);
// `record` still has the count that it was converted with.
void fromStandard(const std::vector<uint8_t>& standard, TW_EXTIMAGEINFO& record);

} // namespace paperline
