#ifndef OMTREE_TESTS_SUPPORT_ASSERTIONCATCHER_H
#define OMTREE_TESTS_SUPPORT_ASSERTIONCATCHER_H

#include "backend/tables/Assert.h"

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// Takes the place of the process's assertion handler for the life of a scope.
///
///     omtest::AssertionCatcher caught(omtest::AfterReport::Throw);
///     EXPECT_THROW(index.Digits(7), omtest::FailedAssertion);
///     EXPECT_EQ(caught.Reports(), std::vector<std::string>{"backend/tables/MultiBase:126: b>0"});
///
/// With AfterReport::Return the failed call carries on. One catcher at a time; the handler before it comes back at the
/// end of the scope.
namespace omtest {

/// Thrown out of the failed call.
class FailedAssertion : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class AfterReport { Throw, Return };

class AssertionCatcher {
public:
    struct Failure {
        std::string source;
        int line;
        std::string condition;
    };

    explicit AssertionCatcher(AfterReport after) : _before(SetAssertionHandler(Handle)) {
        current = this;
        _throws = after == AfterReport::Throw;
    }
    ~AssertionCatcher() {
        SetAssertionHandler(_before);
        current = nullptr;
    }

    AssertionCatcher(AssertionCatcher const&) = delete;
    AssertionCatcher& operator=(AssertionCatcher const&) = delete;

    std::vector<Failure> const& Failures() const { return _failures; }

    /// Each report so far as `source:line: condition`.
    std::vector<std::string> Reports() const {
        std::vector<std::string> reports;
        for (Failure const& failure : _failures) {
            reports.push_back(failure.source + ":" + std::to_string(failure.line) + ": " + failure.condition);
        }
        return reports;
    }

private:
    static void Handle(char const* source, int line, char const* condition) {
        current->_failures.push_back({source, line, condition});
        if (current->_throws) {
            throw FailedAssertion(condition);
        }
    }

    static inline AssertionCatcher* current = nullptr;

    OmAssertionHandler _before;
    bool _throws = false;
    std::vector<Failure> _failures;
};

} // namespace omtest

#endif
