#pragma once
// Code-page text conversion (iconv underneath) and the keyboard language.
// Code page 0 stands for the system default, UTF-8 here.
#include <cstddef>
#include <cstdint>
#include <string>

namespace vostan::platform {

// Converts UTF-16 to bytes in `codePage`; a character the page lacks becomes
// '?'. Returns the bytes written (no terminator).
std::size_t wideToMultiByte(int codePage, const char16_t* src, std::size_t count, char* dst,
                            std::size_t capacity);
// Converts bytes in `codePage` to UTF-16. With dst null, only counts.
std::size_t multiByteToWide(int codePage, const char* src, std::size_t count, char16_t* dst,
                            std::size_t capacity);
bool isDBCSLeadByte(int codePage, uint8_t byte);

// UTF-8 for what the desktop shows, whatever page the text came in.
std::string wideToUtf8(const char16_t* src, std::size_t count);
std::string codePageToUtf8(int codePage, const char* text);

// The ANSI code page of a language id (the stand-in for the locale's default
// ANSI code page); 0 when unknown.
int ansiCodePageOfLanguage(uint16_t languageId);
// The language id of the process's locale, e.g. 0x409 for en_US, 0x411 for ja_JP.
uint16_t localeLanguageId();

}  // namespace vostan::platform
