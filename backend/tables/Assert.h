#ifndef OMTREE_BACKEND_TABLES_ASSERT_H
#define OMTREE_BACKEND_TABLES_ASSERT_H

#include "backend/tables/Export.h"

/// Runtime assertions of the containers and of the calls that trust their caller.
///
/// A broken condition is reported once, as `source:line: condition`, to one replaceable handler of the process. The
/// default handler writes the report to standard error and aborts. A handler may throw, jump or return; when it
/// returns, the failed call carries on (structural assertions) or does nothing (hardened checks, see below).
///
/// Two macros:
///
///     OM_ASSERT(holds, "condition text", "source name", line)     structural invariant, on in every build
///     OM_HARDENED(holds, "condition text", "source name", line)   precondition left to the caller
///
/// Both are expressions of type bool that are true when the condition holds, so a caller writes
///
///     if (!OM_HARDENED(node != nullptr, "node != 0", "backend/tables/om/OmPivotTable", __LINE__)) return;
///
/// The source name carries no file ending. Hardened checks are on unless OMTREE_HARDENED is defined as 0; then the
/// condition is not evaluated and the expression is the constant true.

#ifndef OMTREE_HARDENED
#define OMTREE_HARDENED 1
#endif

/// Receives a failed assertion. `source` and `condition` are string literals: they stay valid for the process's life.
using OmAssertionHandler = void (*)(char const* source, int line, char const* condition);

/// Replaces the handler and returns the one before. A null handler restores the default. The handler is the one piece
/// of process-wide state that changes; replace it before threads start, or while no other thread uses the library.
OM_ASSERT_API OmAssertionHandler SetAssertionHandler(OmAssertionHandler handler);

namespace om_detail {

/// Hands a failed condition to the current handler. Always returns false when the handler returns.
OM_ASSERT_API bool ReportAssertion(char const* condition, char const* source, int line);

} // namespace om_detail

#define OM_ASSERT(holds, condition, source, line)                                                                      \
    (static_cast<bool>(holds) ? true : ::om_detail::ReportAssertion((condition), (source), (line)))

#if OMTREE_HARDENED
#define OM_HARDENED(holds, condition, source, line) OM_ASSERT(holds, condition, source, line)
#else
#define OM_HARDENED(holds, condition, source, line)                                                                    \
    (static_cast<void>(condition), static_cast<void>(source), static_cast<void>(line), true)
#endif

#endif
