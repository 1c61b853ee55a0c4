#include "hdnt/platform/HEX.h"

#include <system_error>

HEXAll::HEXAll(const std::string& message) : message_(message) {}
HEXAll::HEXAll(const HEXAll&) = default;
HEXAll& HEXAll::operator=(const HEXAll&) = default;
HEXAll::~HEXAll() = default;
const char* HEXAll::what() const noexcept { return message_.c_str(); }

HEXAlgException::~HEXAlgException() = default;
HEXDataException::~HEXDataException() = default;
HEXInternalException::~HEXInternalException() = default;

HCTThreadException::HCTThreadException(int code)
    : HEXAll("Mutex operation failed: " + std::generic_category().message(code) + " (code " + std::to_string(code) +
             ")"),
      code_(code) {}
HCTThreadException::~HCTThreadException() = default;
