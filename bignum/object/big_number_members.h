// The members of IPexBigNumber, in slot order.
#pragma once

#include "mirolta.h"
#include "seam/interface_table.h"

namespace mirolta {

inline constexpr ValueType kBigNumber = {VT_DISPATCH, OLESTR("IPexBigNumber")};

// clang-format off
inline constexpr MemberRow kBigNumberMembers[] = {
    Row<&IPexBigNumber::get_Value>(0, OLESTR("Value"), kGet, {}, kTextVariant,
        OLESTR("The number as decimal text, fails for zero; set to text, bytes or a number")),
    Row<&IPexBigNumber::put_Value>(0, OLESTR("Value"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The number as decimal text, fails for zero; set to text, bytes or a number")),
    Row<&IPexBigNumber::get_Hex>(2, OLESTR("Hex"), kGet, {}, kTextVariant,
        OLESTR("The number as lowercase hexadecimal text, fails for zero; set to text, bytes or a number")),
    Row<&IPexBigNumber::put_Hex>(2, OLESTR("Hex"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The number as lowercase hexadecimal text, fails for zero; set to text, bytes or a number")),
    Row<&IPexBigNumber::get_Text>(3, OLESTR("Text"), kGet,
        {Default(OLESTR("lCP"), kLong, 0)}, kText,
        OLESTR("The number's bytes as characters of a character set")),
    Row<&IPexBigNumber::put_Text>(3, OLESTR("Text"), kPut,
        {Default(OLESTR("lCP"), kLong, 0), In(OLESTR("bstrText"), kText)}, kNone,
        OLESTR("The number's bytes as characters of a character set")),
    Row<&IPexBigNumber::get_Binary>(4, OLESTR("Binary"), kGet, {}, kBytesVariant,
        OLESTR("The number as bytes, most significant first; text that it is set to counts as decimal")),
    Row<&IPexBigNumber::put_Binary>(4, OLESTR("Binary"), kPut,
        {In(OLESTR("vValue"), kVariant)}, kNone,
        OLESTR("The number as bytes, most significant first; text that it is set to counts as decimal")),
    Row<&IPexBigNumber::Add>(5, OLESTR("Add"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber, OLESTR("This number plus v, as a new number")),
    Row<&IPexBigNumber::Sub>(6, OLESTR("Sub"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber, OLESTR("This number minus v, as a new number")),
    Row<&IPexBigNumber::Mul>(7, OLESTR("Mul"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber, OLESTR("This number times v, as a new number")),
    Row<&IPexBigNumber::Div>(8, OLESTR("Div"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber,
        OLESTR("This number divided by v, truncated towards zero, as a new number")),
    Row<&IPexBigNumber::Mod>(9, OLESTR("Mod"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber,
        OLESTR("The remainder of the division by v, with this number's sign, as a new number")),
    Row<&IPexBigNumber::Inc>(10, OLESTR("Inc"), kMethod,
        {Optional(OLESTR("v"), kVariant)}, kNone, OLESTR("Adds v, or 1, to this number")),
    Row<&IPexBigNumber::Dec>(11, OLESTR("Dec"), kMethod,
        {Optional(OLESTR("v"), kVariant)}, kNone, OLESTR("Subtracts v, or 1, from this number")),
    Row<&IPexBigNumber::Cmp>(12, OLESTR("Cmp"), kMethod,
        {In(OLESTR("v"), kVariant)}, kLong,
        OLESTR("-1, 0 or 1; two negative numbers compare by magnitude")),
    Row<&IPexBigNumber::NewNumber>(13, OLESTR("NewNumber"), kMethod,
        {Optional(OLESTR("v"), kVariant)}, kBigNumber, OLESTR("A new number, v or zero")),
    Row<&IPexBigNumber::Random>(14, OLESTR("Random"), kMethod,
        {In(OLESTR("lSize"), kLong), Default(OLESTR("bEnsureSize"), kBool, 0),
         Default(OLESTR("bOdd"), kBool, 0)}, kNone,
        OLESTR("Loads a random number of lSize bytes; bEnsureSize sets its two top bits")),
    Row<&IPexBigNumber::GCD>(15, OLESTR("GCD"), kMethod,
        {In(OLESTR("v"), kVariant)}, kBigNumber,
        OLESTR("The greatest common divisor with v, as a new number")),
    Row<&IPexBigNumber::ModExp>(16, OLESTR("ModExp"), kMethod,
        {In(OLESTR("ve"), kVariant), In(OLESTR("vm"), kVariant)}, kBigNumber,
        OLESTR("This number to the power ve modulo vm, as a new number")),
    Row<&IPexBigNumber::ModInv>(17, OLESTR("ModInv"), kMethod,
        {In(OLESTR("vm"), kVariant)}, kBigNumber,
        OLESTR("The inverse modulo vm, as a new number; unchecked if there is none")),
};
// clang-format on

inline constexpr InterfaceTable kBigNumberInterface = {
    &IID_IPexBigNumber, OLESTR("IPexBigNumber"), OLESTR("Big integers"), kBigNumberMembers,
    sizeof(kBigNumberMembers) / sizeof(kBigNumberMembers[0])};

}  // namespace mirolta
