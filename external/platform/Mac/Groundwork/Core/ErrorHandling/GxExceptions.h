// The exceptions of the wrapper layer: a failure is classified by a four-character
// identifier (and, for a system call, its status); no text travels with it.
#pragma once

#include <MacTypes.h>

namespace Gx {

using ExceptionIDT = FourCharCode;

// The identifiers every throw site chooses from.
inline constexpr ExceptionIDT exceptionID_OSError = FourCC("oser");        // a system call failed
inline constexpr ExceptionIDT exceptionID_NilReference = FourCC("cfnr");   // an empty wrapper was used
inline constexpr ExceptionIDT exceptionID_CreateFailed = FourCC("cfcr");   // a create/copy call answered NULL
inline constexpr ExceptionIDT exceptionID_StringTooLong = FourCC("cfsc");  // text does not fit its destination
inline constexpr ExceptionIDT exceptionID_Runtime = FourCC("runt");        // a run-time limit was exceeded
inline constexpr ExceptionIDT exceptionID_Logic = FourCC("logc");          // the caller broke a precondition

// Where a throw happened. Throw sites pass sourceLocation_Nothing; the record exists so that
// a debugging hook could be given a real place without changing any signature.
struct SourceLocation {
    const char* function;
    const char* file;
    SInt32 line;

    constexpr SourceLocation() : function(nullptr), file(nullptr), line(0) {}
    constexpr SourceLocation(const char* inFunction, const char* inFile, SInt32 inLine)
        : function(inFunction), file(inFile), line(inLine)
    {
    }
};

// Constant-initialised, so that it exists before any static initialiser can throw.
extern const SourceLocation sourceLocation_Nothing;

// The message and location are accepted but not kept: building an exception must not
// allocate, and nothing that catches one reads more than its class and identifier.
class Exception {
public:
    Exception(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
    Exception(const Exception&) = default;
    Exception& operator=(const Exception&) = default;

    // Always the empty Pascal string; outReason needs room for one byte.
    virtual StringPtr Why(StringPtr outReason) const;
    virtual ~Exception() = default;

    ExceptionIDT What() const { return mExceptionID; }
    const SourceLocation& Where() const;

private:
    ExceptionIDT mExceptionID;
};

class LogicError : public Exception {
public:
    LogicError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
    [[noreturn]] static void Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
};

class RuntimeError : public Exception {
public:
    RuntimeError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
    [[noreturn]] static void Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
};

// Malformed data. Nothing in the system raises it yet; handlers may still name it.
class DataError : public Exception {
public:
    DataError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
    [[noreturn]] static void Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation);
};

// A failed system call: always identifier 'oser', plus the call's status.
class OSError : public Exception {
public:
    using ThrowFunc = void (*)(OSStatus inErrorCode, const char* inMessage, const SourceLocation& inLocation);

    OSError(OSStatus inErrorCode, const char* inMessage, const SourceLocation& inLocation);

    StringPtr Why(StringPtr outReason) const override;
    OSStatus GetOSErrorCode() const { return mErrorCode; }

    // The hook sees every OSError before it is thrown, with the message that the exception
    // itself drops. It may throw or end the process; if it returns, the throw goes ahead.
    [[noreturn]] static void Throw(OSStatus inErrorCode, const char* inMessage, const SourceLocation& inLocation);
    // Meant to be set once at start-up: Throw reads it without a lock. NULL removes it.
    static void SetThrowFunc(ThrowFunc inThrowFunc);

private:
    OSStatus mErrorCode;
    static ThrowFunc sThrowFunc;
};

}  // namespace Gx
