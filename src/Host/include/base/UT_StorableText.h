// Which texts an XML file can hold: the one rule of the host's files (scenes and preferences).
//
// XML 1.0 has no way to write most control characters, U+FFFE and U+FFFF, even as character
// references, and UTF-8 cannot encode a lone surrogate. A text that holds one of them would be
// written as something that does not read back, or not written at all; the host refuses such
// texts where they enter (setters, readers) rather than lose them at the next save. Tab, line
// feed and carriage return are allowed: writers escape what XML would otherwise change.
//
// Header only, over QtCore (the geometry values of base/ need no Qt; this needs QString).
#pragma once

#include <QString>

// True when every character of `text` can be written to an XML 1.0 file and read back.
inline bool UT_isStorableText(QString const &text)
{
    for (int i = 0; i < text.size(); ++i) {
        ushort const c = text.at(i).unicode();
        if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
            return false;
        if (c == 0xFFFE || c == 0xFFFF)
            return false;
        if (QChar::isHighSurrogate(c)) {
            if (i + 1 >= text.size() || !text.at(i + 1).isLowSurrogate())
                return false;
            ++i;
        } else if (QChar::isLowSurrogate(c)) {
            return false;
        }
    }
    return true;
}

// What UT_isStorableText refuses, for messages.
inline QString UT_storableTextRule()
{
    return QStringLiteral("control characters other than tab, line feed and carriage return, U+FFFE, U+FFFF "
                          "or a lone surrogate");
}
