#include "AttributeValueValidator.h"

#include "formats/ValueFormats.h"

QValidator::State AttributeValueValidator::validate(QString &input, int &) const
{
    return isAcceptableAttributeValue(input) ? Acceptable : Invalid;
}
