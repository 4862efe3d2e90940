// A file of color rules of any bytes: what was read can be written and read again
// without a change, and stays within the limits.

#include "colorrules.h"

#include <cstdint>
#include <cstdlib>

// Qt's parser of JSON loses memory where an object has a name twice.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libQt5Core.so";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QString reason;
    const QByteArray file(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const std::optional<ColorRules> rules = ColorRuleFile::read(file, &reason);
    if (rules.has_value() != reason.isEmpty())
        abort();
    if (!rules)
        return 0;
    for (const ColorRule &rule : *rules)
        if (rule.pattern.text.isEmpty() || rule.pattern.text.size() > ColorRuleFile::maxPattern)
            abort();
    const std::optional<ColorRules> again = ColorRuleFile::read(ColorRuleFile::write(*rules), &reason);
    if (rules->size() > ColorRuleFile::maxRules || !again || !(*again == *rules))
        abort();
    return 0;
}
