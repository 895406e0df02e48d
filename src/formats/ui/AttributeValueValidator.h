#pragma once

#include <QValidator>

// Refuses, as typed or pasted, any text the style file could not hold as a
// quoted attribute value (a '"').
class AttributeValueValidator : public QValidator {
    Q_OBJECT
public:
    using QValidator::QValidator;
    State validate(QString &input, int &pos) const override;
};
