#include "platform/PlatformServices.h"

const char kOurProductName[] = "Vemora";

namespace kvx {

const char Platform::kPathDelimiter = '/';
const wchar_t Platform::kPathDelimiterL = L'/';
const char* const Platform::kPathDelimiterCStr = "/";
const wchar_t* const Platform::kPathDelimiterCStrL = L"/";

Platform& Platform::instance()
{
    static Platform sPlatform;
    return sPlatform;
}

Platform::~Platform() = default;

}  // namespace kvx
