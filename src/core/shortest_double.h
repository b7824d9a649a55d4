#ifndef CORE_SHORTEST_DOUBLE_H
#define CORE_SHORTEST_DOUBLE_H

// Long enough for any number that Write_Shortest_Double writes.
inline constexpr int shortest_double_size = 512;

// Writes a finite number as plain text without an exponent, adds a NUL, and answers the length: "-" for
// negative numbers, zero included; then the fewest digits that lie nearer to the number than to any other,
// with "0." in front of a fraction. Whole numbers of up to 15 digits have all their digits. Beyond, the text
// ends with the last digit that isn't 0, so that 1e22 comes out as "1": established behaviour, what is stored
// in users' data was written so.
//
// The digits are those of mode 1 of David Gay's conversion ("Correctly Rounded Binary-Decimal and
// Decimal-Binary Conversions", 1990): a text that is just as near to a neighbour doesn't count, though
// reading it would round to the number. 1e23 has the digits 9999999999999999.
int Write_Shortest_Double(double value, char (&text)[shortest_double_size]);

#endif
