#pragma once

// The texts that stand in a document's bytes, a slice at a time. A text is a run of
// characters that can be shown; a long one is reported in parts. The document must not
// change meanwhile.

#include "hexdocument.h"

#include <memory>
#include <vector>

class HexStrings
{
public:
    enum Encoding { Ascii = 1, Utf8 = 2, Utf16Le = 4, Utf16Be = 8, Gb18030 = 16 };

    struct Text
    {
        qint64 address = 0;
        int length = 0;            // bytes
        Encoding encoding = Ascii; // Ascii also of what other encodings write the same way
    };
    static constexpr int maxLength = 4096; // characters of a reported part
    static constexpr size_t maxTexts = 250000;

    // encodings: bits. Texts of different encodings may overlap.
    HexStrings(const HexDocument &document, int encodings, int minCharacters);
    ~HexStrings();
    Q_DISABLE_COPY_MOVE(HexStrings)

    // False at the end, or when there are too many texts.
    bool step();
    int permille() const;
    bool isCut() const { return m_texts.size() >= maxTexts; }
    std::vector<Text> takeTexts(); // by address

    class Scanner;

private:
    void sortFrom(size_t first);

    const HexDocument &m_document;
    qint64 m_at = 0;
    std::vector<Text> m_texts;
    std::vector<std::unique_ptr<Scanner>> m_scanners;
};
