#ifndef OMTREE_EXAMPLES_CROSSTAB_FAILURE_H
#define OMTREE_EXAMPLES_CROSSTAB_FAILURE_H

#include <stdexcept>

namespace crosstab {

/// Why the tool gives up, in one line for standard error: "data.csv:17: column "Freq": "n/a" is not a number". Whatever
/// comes from files or from the command line stands in it as `printable` gives it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace crosstab

#endif
