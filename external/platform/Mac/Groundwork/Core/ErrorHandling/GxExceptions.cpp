#include <Groundwork/Core/ErrorHandling/GxExceptions.h>

namespace Gx {

constinit const SourceLocation sourceLocation_Nothing;

constinit OSError::ThrowFunc OSError::sThrowFunc = nullptr;

// The message is dropped on purpose: an exception is its class, identifier and status, and an
// empty reason is the intended answer, not a lost one.
Exception::Exception(ExceptionIDT inID, const char*, const SourceLocation&) : mExceptionID(inID) {}

StringPtr Exception::Why(StringPtr outReason) const
{
    outReason[0] = 0;
    return outReason;
}

const SourceLocation& Exception::Where() const { return sourceLocation_Nothing; }

LogicError::LogicError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
    : Exception(inID, inMessage, inLocation)
{
}

void LogicError::Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
{
    throw LogicError(inID, inMessage, inLocation);
}

RuntimeError::RuntimeError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
    : Exception(inID, inMessage, inLocation)
{
}

void RuntimeError::Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
{
    throw RuntimeError(inID, inMessage, inLocation);
}

DataError::DataError(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
    : Exception(inID, inMessage, inLocation)
{
}

void DataError::Throw(ExceptionIDT inID, const char* inMessage, const SourceLocation& inLocation)
{
    throw DataError(inID, inMessage, inLocation);
}

OSError::OSError(OSStatus inErrorCode, const char* inMessage, const SourceLocation& inLocation)
    : Exception(exceptionID_OSError, inMessage, inLocation), mErrorCode(inErrorCode)
{
}

StringPtr OSError::Why(StringPtr outReason) const
{
    outReason[0] = 0;
    return outReason;
}

void OSError::Throw(OSStatus inErrorCode, const char* inMessage, const SourceLocation& inLocation)
{
    if (sThrowFunc != nullptr)
        sThrowFunc(inErrorCode, inMessage, inLocation);
    throw OSError(inErrorCode, inMessage, inLocation);
}

void OSError::SetThrowFunc(ThrowFunc inThrowFunc) { sThrowFunc = inThrowFunc; }

}  // namespace Gx
