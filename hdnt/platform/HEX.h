#pragma once

#include "hdnt/platform/Export.h"

#include <exception>
#include <string>

/// Base of everything the library throws on purpose. what() is exactly the message given.
class HDNT_API HEXAll : public std::exception {
public:
    explicit HEXAll(const std::string& message);
    HEXAll(const HEXAll&);
    HEXAll& operator=(const HEXAll&);
    ~HEXAll() override;
    const char* what() const noexcept override;

private:
    std::string message_;
};

/// Misuse by the caller: an index out of range, an iterator read where it has no item.
class HDNT_API HEXAlgException : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~HEXAlgException() override;
};

/// A data or configuration file that is missing, unreadable or wrong.
class HDNT_API HEXDataException : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~HEXDataException() override;
};

/// A state the library itself should never reach.
class HDNT_API HEXInternalException : public HEXAll {
public:
    using HEXAll::HEXAll;
    ~HEXInternalException() override;
};

/// A lock or unlock that failed; the code is the errno value the threading library gave.
class HDNT_API HCTThreadException : public HEXAll {
public:
    explicit HCTThreadException(int code);
    ~HCTThreadException() override;
    int getCode() const noexcept { return code_; }

private:
    int code_;
};
