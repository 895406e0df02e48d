// The value texts of the settings page: colour, percentage, position.
#include "FuzzSupport.h"
#include "formats/ValueFormats.h"

CUBRIX_FUZZ_ENTRY(fuzzValues)
{
    const QString text = QString::fromLatin1(fuzzBytes(data, size));
    (void)acceptColor(text);
    (void)acceptPercentage(text);
    (void)acceptPosition(text);
    (void)isAcceptableAttributeValue(text);
    return 0;
}
