#ifndef OMTREE_OMCELL_OMNUMBER_H
#define OMTREE_OMCELL_OMNUMBER_H

#include "omcell/Export.h"
#include "omcell/OmCellText.h"
#include "omcell/RegionBytes.h"

#include <cstdint>
#include <string>

/// A number and the format that it is shown in.
///
/// `AsString` (and the UTF-8 and English forms) ignore the format: the shortest text that reads back as the same
/// double, with a point as decimal mark. `AsFormattedString` is what a cell shows. Neither depends on the locale of the
/// process.
///
///     value     AsString   format                                  AsFormattedString
///     1234.5    1234.5     fixed, 2 decimals, grouping ','         1,234.50
///     12.5      12.5       percent, 1 decimal                      12.5%
///     0.00042   0.00042    scientific, 2 decimals                  4.20E-04
///     -7        -7         currency "$", 2 decimals                -$7.00
///     missing   .          any                                     .
///
/// Missing. A missing value is a double that is not a number; `MissingValue()` makes one and any other counts as well.
/// It shows as a point and sorts before every number.
///
/// The currency symbol lies in the text's region, so an arena's sweep leaves nothing of a number behind.
class OMCELL_API OmNumber : public OmCellText {
public:
    /// What `OrderCode` gives.
    static constexpr short Order = 2;

    /// How the number is written. A value beyond these counts as GeneralFormat.
    enum FormatType : std::int32_t {
        /// Like FixedFormat but with at most that many decimals and no zeros at the end. Numbers below 0.0001 or from
        /// 1e15
        /// up are written as in ScientificFormat, again without zeros at the end of the first part.
        GeneralFormat = 0,
        /// With that many decimals.
        FixedFormat = 1,
        /// As FixedFormat, with '%' behind. The value is a percentage already and is not multiplied: 12.5 shows
        /// as 12.5%.
        PercentFormat = 2,
        /// One digit, that many decimals, 'E', a sign and at least two digits: 1.50E+03. Nothing is grouped.
        ScientificFormat = 3,
        /// As FixedFormat, with the symbol in front of the digits and behind the sign: -$7.00.
        CurrencyFormat = 4
    };

    /// In place of a number of decimals: as many as it takes to read the same double back.
    static constexpr int AsNeeded = -1;

    /// Rounding. The exact value of the double is rounded to the nearest last decimal, half way away from zero: 0.125
    /// with two decimals is 0.13 and 2.5 with none is 3, while 2.675, whose double lies below the half, is 2.67.
    /// A result that is zero in every digit has no sign: -0.001 with two decimals is 0.00.
    /// An infinite value is "inf" or "-inf" in every format, without symbol or percent sign.
    struct Format {
        FormatType type = GeneralFormat;
        /// Negative: AsNeeded. No double has more than 1074, so larger numbers count as that.
        int decimals = AsNeeded;
        /// Between whole part and decimals. Written in UTF-8; no mark (0) means a point.
        char32_t decimalMark = U'.';
        /// Between groups of three digits of the whole part; 0 for none.
        char32_t grouping = 0;
        /// Of CurrencyFormat, in UTF-8; kept but not shown by the others.
        std::string symbol;
    };

    /// A double that counts as missing.
    static double MissingValue();

    /// A number in the general format, for `region` (the default heap when null): `new (region) OmNumber(1.5, region)`.
    explicit OmNumber(double value, OmMemoryRegion* region = nullptr);
    OmNumber(double value, Format const& format, OmMemoryRegion* region = nullptr);

    ~OmNumber() override;

    void Accept(Visitor& visitor) override;
    short OrderCode() const override;

    /// The shortest text that reads back as the same double: "1e+30", "-0", "0.1", "inf"; "." when missing.
    std::string AsString() const override;
    /// As `AsString`.
    std::string AsU8String() const override;
    /// As `AsString`.
    std::string AsEngString() const override;
    /// The number in its format.
    std::string AsFormattedString() const override;

    /// The value; not a number when missing.
    double NumericValue() const override;

    /// Two numbers by value, a missing one first; missing values are equal whatever their bits, and so are the two
    /// zeros. The format takes no part. Against another kind by order code.
    short Compare(OmCellText const& other) const override;

    /// A copy with format and metadata.
    OmCellText* Clone(OmMemoryRegion* region) const override;

    bool IsMissing() const;

    Format getFormat() const;
    /// Replaces the format. Throws std::bad_alloc when there is no memory for the symbol; the format is unchanged then.
    void setFormat(Format const& format);

private:
    OmNumber(OmNumber const& source, OmMemoryRegion* region);

    double _value;
    om_detail::RegionBytes _symbol;
    FormatType _type;
    std::int32_t _decimals;
    char32_t _decimalMark;
    char32_t _grouping;
};

#endif
