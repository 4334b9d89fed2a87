// Texts that conversions to numbers and dates try. Each list is one literal whose entries are
// separated by "|".
#pragma once

#include "platform.h"

namespace mirolta::value_parity {

// Numbers, spelled in each way that a conversion knows or refuses.
inline constexpr OLECHAR kNumberTexts[] =
    // Blanks and signs.
    OLESTR("| |0|1|-1|+1| 12 |\t12\t|\n12\n|1 2|12abc|abc|")
    // Exponents.
    OLESTR("1e3|1E3|1e+3|1e-3|1.5e3|1e|1d3|e3|")
    // Hexadecimal and octal.
    OLESTR("&HFF|&hff|&O17|&o17|&H|&HFFFF|&HFFFFFFFF|&H80000000|&H7FFF|&H8000|-&HFF| &HFF |")
    OLESTR("&HFFFFFFFFFFFFFFFF|&O177777|0x10|")
    // Separators of thousands.
    OLESTR("1,234.5|1,2,3|12,34|,1|1,|1,234|1,,2|")
    // Currency signs, brackets and trailing signs.
    OLESTR("$5|$ 5|5$|-$5|$-5|$1,234.56|(5)|(5|5)|($5)|$(5)|(-5)|5-|5+|-5-|--5|+-5|- 5|5 -|")
    OLESTR("( 5 )|")
    // Truth values.
    OLESTR("true|True|TRUE|false|#TRUE#|#FALSE#|#true#|yes| true|")
    // Halves and points.
    OLESTR("0.5|1.5|2.5|-0.5|-1.5|.5|5.|.|-|+|1.2.3|")
    // The limits of the integers.
    OLESTR("127|128|-128|-129|127.4|127.5|128.5|255|255.5|254.5|256|32767|32767.5|32768|-32768|")
    OLESTR("-32769|65535|65535.5|65536|2147483647|2147483647.5|2147483648|-2147483648|")
    OLESTR("-2147483649|4294967295|4294967295.5|4294967296|9223372036854775807|")
    OLESTR("9223372036854775808|-9223372036854775808|-9223372036854775809|18446744073709551615|")
    OLESTR("18446744073709551616|")
    // The limits of decimals and reals.
    OLESTR("79228162514264337593543950335|79228162514264337593543950336|")
    OLESTR("-79228162514264337593543950335|0.0000000000000000000000000001|")
    OLESTR("0.00000000000000000000000000001|7.9228162514264337593543950335|")
    OLESTR("1.23456789012345678901234567890123456789|123456789012345678901234567890123456789|")
    OLESTR("1e28|1e29|1e38|3.5e38|1e308|1e309|1e-400|1e-45|1e99999|0e99999|")
    // The limits of currency, and what it rounds.
    OLESTR("922337203685477.5807|922337203685477.5808|-922337203685477.5808|0.00005|0.00015|")
    OLESTR("0.00025|1.00005|0.1|")
    // Many digits and zeros.
    OLESTR("3.14159265358979|3.141592653589793238|000123|-000|00.100|100|1000000|1200|12.3400|")
    // What is no number; digits and spaces of other alphabets.
    OLESTR("%5|5%|inf|nan|1.#INF|\u0661|\uFF11|\u00A01|1\u00A0|\u20AC5|1'000|")
    // Exponents beside the rest.
    OLESTR("1e3.5|1e 3|1 e3|1,000e3|(1e3)|1e3-|")
    // Dates and times.
    OLESTR("36526|36526.5|1/2|10:30|")
    // Separators of thousands beside the point.
    OLESTR("1.5,3|1.,5|1,.5|")
    // Signs that meet.
    OLESTR("(5)-|-(5)|(5-)|((5))|$$5|$5$|5 $|5$-|5-$|+5+|-5+|+5-|-+5|$+5|(+5)|(5+)|")
    // Signs and spaces of hexadecimal and octal numbers.
    OLESTR("&H5-|&H5)|(&H5)|$&H5|+&H5|&H 5|& H5|&H5 5|&H1G|&H1.5|&O8|&O18|")
    // Hexadecimal and octal numbers about the limits of the integers.
    OLESTR("&H123456789|&H7FFFFFFFFFFFFFFF|&H8000000000000000|&HFFFFFFFFF|&H00000000000000000FF|")
    OLESTR("&HFFFFFFFE|&H90000000|&HC0000000|&HFFFF0000|&O37777777777|&O20000000000|")
    // Exponents without digits, and with many.
    OLESTR("1e+|1e-|1e+-3|1e03|1e00000000000000000003|.e3|.5e1|5.e1|e|0x|")
    // White space.
    OLESTR("1\t\r\n|\v1|\f1|\r1|1\v|\u20031|\u30001|1\u3000|1 000|1\u00a0000|")
    // Currency names; spaces between the parts.
    OLESTR("USD5|5USD|- $ 5|$ - 5|( $ 5 )|$5)|1 , 2|1, 2|1. 5|1 .5|")
    // Zeros.
    OLESTR("00|0.0|-0|0e5|-0.4|-0.6|(0)|0-|(0.5)|")
    // More digits than a decimal holds.
    OLESTR("2.50000000000000000000000000000000000000000000000000000000000000000000001|")
    OLESTR("79228162514264337593543950334.5|9.99999999999999999999999999999999|6e-29|1e-29");

// Dates and times.
inline constexpr OLECHAR kDateTexts[] =
    // One date, and times of the day.
    OLESTR("1/2/2000|2000-01-02|10:30 PM|10:30PM|10:30|10:30:45|10:30:45 AM|22:30|24:00|")
    OLESTR("23:59:59|10:60|10:30:60|12:00 AM|12:00 PM|13:00 PM|0:30 AM|10 PM|10 am|10pm|")
    // A date with a time; orders of year, month and day.
    OLESTR("1/2/2000 10:30|1/2/2000 10:30:45 PM|10:30 1/2/2000|2000-01-02 10:30:45|")
    OLESTR("2000-01-02T10:30:45|2000/01/02|2000.01.02|2/1/2000|13/1/2000|1/13/2000|31/12/1999|")
    OLESTR("12/31/1999|")
    // Days and months that do not exist.
    OLESTR("2/30/2000|2/29/2000|2/29/1900|2/29/2001|13/13/2000|0/1/2000|1/0/2000|1/32/2000|")
    // Years of any number of digits.
    OLESTR("1/2/0|1/2/00|1/2/29|1/2/30|1/2/49|1/2/50|1/2/99|1/2/100|1/2/999|1/2/9999|1/2/10000|")
    // Separators.
    OLESTR("01/02/2000|1-2-2000|1.2.2000|1 2 2000|1,2,2000|1 / 2 / 2000|1-2/2000|")
    // Names of months and days of the week.
    OLESTR("Jan 2 2000|January 2, 2000|jan 2, 2000|2 January 2000|2 jan 2000|2-Jan-2000|")
    OLESTR("2-jan-00|Jan-2-2000|2000 Jan 2|2000 2 Jan|Jan 2000|January 2000|2000 January|")
    OLESTR("May 5 2010|Sept 5 2010|Sep 5 2010|Dec 31 1999 11:59 PM|Feb 30 2000|Janu 2 2000|")
    OLESTR("Ja 2 2000|Jan/2/2000|jan2,2000|January 2, 2000 10:30:00 AM|Sunday, January 2, 2000|")
    OLESTR("Sun Jan 2 2000|Monday January 2 2000|Sunday|January|Jan|Jan 40|Jan 1999|")
    // Two numbers or one.
    OLESTR("2000|20000102|1/2000|13/2000|2000/1|2000/13|2000-02-30|2000-13-01|2000-12-13|")
    OLESTR("2000-31-12|")
    // Which number is the year.
    OLESTR("100-1-1|99-1-1|99/12/31|50-6-7|32/1/2|1/32/2|40/5/6|5/40/6|12/13/14|13/12/14|")
    OLESTR("14/13/12|31/31/31|")
    // The first days, the limits and leap years.
    OLESTR("12/30/1899|12/29/1899|12/31/1899|12/30/1899 10:30|12/29/1899 10:30|1/1/100|1/1/0100|")
    OLESTR("12/31/9999|12/31/9999 23:59:59|1/1/1900|3/1/1900|2/28/1900|")
    // What follows or precedes a date.
    OLESTR("1/2/2000 | 1/2/2000|1/2/2000x|x1/2/2000|1/2/2000 25:00|1/2/2000 PM|1//2000|/1/2000|")
    OLESTR("1/2/|")
    // Times that lack a number or have one too many.
    OLESTR("1:|:30|1:2:3:4|1:2.5|10:30:45.5|10.30|10.30.45|1.2.3.4|1/2/3/4|")
    // No date; times with AM and PM.
    OLESTR("garbage|12:30 a.m.|1:2 pm 1/2/2003|1/2/2003 1:2pm|01:02:03 pm|1/2/2000 10:30:45PM|")
    OLESTR("#1/2/2000#|")
    // Numbers.
    OLESTR("1.5|-1.5|1e3|32|36526|")
    // Day and month without a year.
    OLESTR("13/5|31/4|5/31|2/30|2/29|99/1|1/99|32/1|1/32|0/5|5/0|12/12|13/13|32/32|")
    // Names of months with one or two numbers.
    OLESTR("Jan 5|5 Jan|Jan 31|Jan 32|Feb 29|Feb 30|Jan 0|0 Jan|Jan 5 6|5 Jan 6|5 6 Jan|")
    OLESTR("Jan 32 6|Jan 6 32|32 Jan 6|6 Jan 32|Jan 31 31|Feb 29 30|Feb 30 29|30 Feb 29|")
    // A date with a number more; the time first.
    OLESTR("1/2/2000 12|1/2/3 4 PM|1 PM 2/3/2004|10:30 Jan 5 2000|10:30 Jan 5|")
    // Numbers with spaces; two months, two times.
    OLESTR("1 2 3 4|1 2|5|Jan Feb 5|10:30 11:30|10:30 10:40 PM|")
    // AM and PM without a time or in the wrong place.
    OLESTR("PM|PM 10:30|AM 10|10:30 PM AM|")
    // Points, and separators that are mixed or left over.
    OLESTR("1:2:3 1/2|1/2 1:2:3|1.30 PM|1.30 1/2/2000|1/2/2000 1.30|25.30|1.2.3 PM|1/2-3|1-2-3|")
    OLESTR("1,2 3|1, 2, 3|/1/2/3|1/2/3/|1:2:|1::2|1 :2|1: 2|1 : 2 : 3|")
    // What separates date and time.
    OLESTR("1/2/2000,10:30|1/2/2000, 10:30|1/2/2000-10:30|1/2/2000/10:30|10:30,1/2/2000|")
    // Days of the week, ordinals, short and wrong names.
    OLESTR("Mon 1/2/2000|Mon|Tue 10:30|mon jan 5|Jan. 5 2000|5. Jan 2000|5 of Jan|5th Jan|")
    OLESTR("march 5 2000|mar 5 2000|marc 5 2000|")
    // Which number is the month.
    OLESTR("12/25/99|25/12/99|99/25/12|12/99/25|25/99/12|99/12/25|")
    // White space; leading zeros.
    OLESTR("\t1/2/2000|1/2/2000\n|1\t2\t2000|1/2/2000\u00A0|0:0:0|0:0|00:00:00|10:5|10:005|")
    OLESTR("010:05|1/002/2000|1/2/02000|00001/2/2000|1/2/000|1/2/0005|1/2/005|")
    // AM and PM at each hour.
    OLESTR("12 AM|12 PM|0 AM|0 PM|13 PM|23 PM|24 PM|13 AM|23:00 AM|10:30 XM|10:30 a.m.|")
    OLESTR("10:30 AMX|10:30 P M|")
    // Commas and names.
    OLESTR("January, 2000|January,2000|2000, January|1/Jan/2000|1 Jan 2000 10:30:45 pm|")
    OLESTR("Saturday 1 January 2000 10:30:45 pm|")
    // Signs and brackets.
    OLESTR("+1/2/2000|-1/2/2000|(1/2/2000)|1/2/2000;10:30|")
    // Days and years out of range.
    OLESTR("9/31/2000|12/31/99|1/1/0099|1/1/99|65536/1/1|1/65537/2000|99999999999/1/1|")
    OLESTR("4294967297/1/2000|")
    // Two numbers, with and without a name.
    OLESTR("1 2 PM|10:30 pm 1-2-2000|2000-1|2000 1|1 2000|2000 13|10,30|1e3/2|")
    // The month that has no longer name.
    OLESTR("May|may 5|mayo 5|may5|5may|5may2000|5may00|")
    // Midnight, and times before the first day.
    OLESTR("1/2/2000 0:00|12/30/1899 0:00|12/29/1899 12:00|12/29/1899 0:00:01|1/1/100 0:00:01|")
    // Points.
    OLESTR("1.1|1.1.1.1|24.1|23.59|23.59.59|23.60|1:2.3|1.2:3|1:2:3.5");

}  // namespace mirolta::value_parity
