#include <omtree.h>

int Categories(OmDimension const& dimension);
int Categories(OmDimension const& dimension) { return static_cast<int>(dimension.getMaximumDepth()); }
