#ifndef OMTREE_BACKEND_TABLES_OM_OMSEXCEPTION_H
#define OMTREE_BACKEND_TABLES_OM_OMSEXCEPTION_H

#include "backend/tables/Export.h"

#include <exception>
#include <string>

/// Thrown when an argument breaks a contract that its class documents.
///
/// The message names class and member, then " -- ", then the broken condition: "OmPivotTable::Size() -- which < 0".
/// Value 1 is the offending value and value 2 the bound that it failed against; both are 0 where no numbers were
/// compared.
class OMTREE_API OMSException : public std::exception {
public:
    explicit OMSException(std::string message, double value1 = 0.0, double value2 = 0.0);
    ~OMSException() override;

    /// The message, ", value 1 == ", value 1, ", value 2 == ", value 2, each value as a standard stream writes a double
    /// by default (six significant digits), whatever the global locale. Composed anew on each call: the pointer is
    /// valid until the next call on the same object. When there is no memory for it, the message alone.
    char const* what() const noexcept override;

    std::string const& Message() const { return _message; }
    double Value1() const { return _value1; }
    double Value2() const { return _value2; }

private:
    std::string _message;
    double _value1;
    double _value2;
    mutable std::string _text;
};

#endif
