#ifndef OMTREE_BACKEND_TABLES_OM_OMOUTPUTPART_H
#define OMTREE_BACKEND_TABLES_OM_OMOUTPUTPART_H

#include "backend/tables/Export.h"

class OmCellText;

class OmAnswerTree;
class OmChart;
class OmHeading;
class OmInteractive;
class OmModel;
class OmPageTitle;
class OmPivotTable;
class OmProcedure;
class OmTextBlock;

/// Base of every item of the output document: a titled object that a visitor can dispatch on.
///
///     +--------+-------+-----------+---------+----------+
///     | vtable | title | user data | visible | expanded |
///     +--------+-------+-----------+---------+----------+
///
/// The part owns its title, a clone in the default heap of the text given to the constructor. Parts are heap objects,
/// destroyed through the virtual destructor.
///
/// Copying, by constructor or assignment, is member by member and shallow, in every part class: a copy shares its
/// source's title object (and whatever record, footnotes or streams a derived class points at), and only one of the two
/// may be destroyed. Assignment does not free what the target pointed at before.
class OMTREE_API OmOutputPart {
public:
    class Visitor;

    /// Destroys the title and sets the pointer to it to null; a title that asks for it meanwhile finds null.
    virtual ~OmOutputPart();

    /// Calls `visitor.Visit(*this)` with the overload for the object's own class.
    virtual void Accept(Visitor& visitor) = 0;

    /// The title; owned by the part, valid until it is replaced or the part is destroyed. Never null in a part that was
    /// made in the ordinary way.
    OmCellText* Title() { return _title; }
    OmCellText const* Title() const { return _title; }

    /// A pointer for the program's own use; null at first, not owned, read by no operation here.
    void* UserData() const { return _userData; }
    void UserData(void* data) { _userData = data; }

    /// Two flags for the program's own use; true at first, read by no operation here.
    bool Visible() const { return _visible; }
    void Visible(bool visible) { _visible = visible; }
    bool Expanded() const { return _expanded; }
    void Expanded(bool expanded) { _expanded = expanded; }

protected:
    /// The title is a clone of `title` in the default heap.
    explicit OmOutputPart(OmCellText const& title);

    OmOutputPart(OmOutputPart const&) = default;
    OmOutputPart& operator=(OmOutputPart const&) = default;

    /// Destroys the title, then puts a clone of `title` (made in the default heap) in its place. Where both are of the
    /// library's own kinds, to the last part, the clone is made first, and `title` may be the part's own or a part of
    /// it. A title whose `Clone` gives itself stays when it is given again.
    /// REQUIRES: `TakesTitle(title)`; when its handler returns, the title stays.
    void ReplaceTitle(OmCellText const& title);

    /// Whether `title` can be the next title: where a program's own kind is among the two or their parts, it is neither
    /// the part's own title nor a part of that. Otherwise reported (hardened check "title != held").
    bool TakesTitle(OmCellText const& title);

private:
    OmCellText* _title;
    void* _userData = nullptr;
    bool _visible = true;
    bool _expanded = true;
    bool _titleIsItsOwnClone;
};

/// Called by `OmOutputPart::Accept`. The order of the overloads is the order of the virtual slots; there is no virtual
/// destructor among them, so a visitor is never deleted through this class.
///
/// A procedure is a heading and a page title is a text block: their two overloads hand the object on to the overload
/// for the base class unless a visitor overrides them. The others every visitor supplies. (A visitor class that
/// overrides some of the overloads says `using OmOutputPart::Visitor::Visit;` so that the rest stay visible.)
class OMTREE_API OmOutputPart::Visitor {
public:
    virtual void Visit(OmInteractive& part) = 0;
    virtual void Visit(OmModel& part) = 0;
    virtual void Visit(OmAnswerTree& part) = 0;
    virtual void Visit(OmChart& part) = 0;
    virtual void Visit(OmPageTitle& part);
    virtual void Visit(OmTextBlock& part) = 0;
    virtual void Visit(OmHeading& part) = 0;
    virtual void Visit(OmProcedure& part);
    virtual void Visit(OmPivotTable& part) = 0;

protected:
    ~Visitor() = default;
};

#endif
