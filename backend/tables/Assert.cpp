#include "backend/tables/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void AbortWithReport(char const* source, int line, char const* condition) {
    std::fprintf(stderr, "%s:%d: %s\n", source, line, condition);
    std::fflush(stderr);
    std::abort();
}

OmAssertionHandler currentHandler = AbortWithReport;

} // namespace

OmAssertionHandler SetAssertionHandler(OmAssertionHandler handler) {
    OmAssertionHandler const before = currentHandler;
    currentHandler = handler != nullptr ? handler : AbortWithReport;
    return before;
}

bool om_detail::ReportAssertion(char const* condition, char const* source, int line) {
    currentHandler(source, line, condition);
    return false;
}
