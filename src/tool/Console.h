#pragma once

#include <string>

// Standard output and standard error: UTF-8, whatever the code page of a console.

// Writes the text to standard output.
void Print(const std::string& text);

// Writes the text to standard error.
void PrintError(const std::string& text);

enum class Colour { None, Green, Yellow, Red, Grey };

// The text in a colour for standard output: as it is when that is no console, or when NO_COLOR is set.
std::string InColour(Colour colour, const std::string& text);

// One line of standard error that is written over and over, on a console only. The next text that Print or PrintError writes
// takes its place.
void ShowProgress(const std::string& text);

// The text in lines of at most 100 columns, each behind so many blanks. A word that is longer stands alone.
std::string Paragraph(std::size_t indent, const std::string& text);
