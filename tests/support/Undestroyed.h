#ifndef OMTREE_TESTS_SUPPORT_UNDESTROYED_H
#define OMTREE_TESTS_SUPPORT_UNDESTROYED_H

#include <utility>

/// An object whose storage goes without its destructor. Output parts are copied with the pointers that they own, so of
/// a part and its copy only one may be destroyed; tests keep the other one here.
///
///     OmHeading heading(title);
///     Undestroyed<OmHeading> copy(heading);
///     EXPECT_EQ(copy->Title(), heading.Title());
///
/// Whatever the object holds by value outside its storage (a list, a long string) must be emptied by the test.
namespace omtest {

template <typename T>
class Undestroyed {
public:
    template <typename... Arguments>
    explicit Undestroyed(Arguments&&... arguments) : _place(std::forward<Arguments>(arguments)...) {}
    Undestroyed(Undestroyed const&) = delete;
    Undestroyed& operator=(Undestroyed const&) = delete;

    T& operator*() { return _place.object; }
    T* operator->() { return &_place.object; }

private:
    union Place {
        template <typename... Arguments>
        explicit Place(Arguments&&... arguments) : object(std::forward<Arguments>(arguments)...) {}
        ~Place() {}
        T object;
    };
    Place _place;
};

} // namespace omtest

#endif
