#pragma once

// Which text codec a stream of bytes is clearly in, judged over some hundred
// characters that are not ASCII. In doubt there is no verdict: where the bytes make
// sense in both codecs, or in none.

#include "textcodec.h"

#include <optional>

class CodecGuess
{
public:
    // What a judgement is made of; the next one begins again.
    static constexpr int windowBytes = 600; // that are not ASCII

    void add(const QByteArray &bytes);
    // What follows is another stream: half a character before it is no error.
    void cut();
    void clear();

    // Of the last bytes that were enough for a judgement.
    std::optional<TextCodec::Index> verdict() const { return m_verdict; }

private:
    // The bytes read in one codec.
    struct Reading
    {
        QByteArray pending; // the beginning of a character
        int valid = 0;      // characters, without ASCII
        int common = 0;     // of them, those that most text consists of
        int invalid = 0;    // bytes

        double validShare() const { return valid / qMax(1.0, double(valid + invalid)); }
        double commonShare() const { return common / qMax(1.0, double(valid + invalid)); }
    };

    void addUtf8(const QByteArray &bytes);
    void addGb18030(const QByteArray &bytes);
    void judge();

    Reading m_utf8;
    Reading m_gb18030;
    int m_bytes = 0; // that are not ASCII
    std::optional<TextCodec::Index> m_verdict;
};
