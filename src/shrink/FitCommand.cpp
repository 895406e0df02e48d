#include "shrink/FitCommand.h"

#include "app/BlocksetDocument.h"
#include "shrink/ShrinkCommand.h"

#include <QFile>
#include <QSaveFile>

using namespace Qt::StringLiterals;

DocumentFit planDocumentFit(BlocksetDocument &document, const FitOptions &options)
{
    DocumentFit plan;
    plan.shrink = planDocumentShrink(document);
    QList<FitItem> items;
    for (const ShrinkPlan::Step &step : std::as_const(plan.shrink.steps)) {
        const QString &path = step.item.path;
        if (!path.startsWith(u"textures/"_s) && !path.startsWith(u"sounds/"_s))
            continue;
        FitItem item{path, step.content, step.item.after};
        if (!step.rewrite) {
            QFile file(document.workingFolder() + u'/' + path);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            item.content = file.readAll();
        }
        items.append(item);
    }
    plan.fit = planFit(items, plan.shrink.archiveAfter(), options);
    return plan;
}

Result applyDocumentFit(BlocksetDocument &document, const DocumentFit &plan)
{
    const QMap<QString, QByteArray> contents = plan.fit.chosenContents();
    if (contents.isEmpty())
        return applyDocumentShrink(document, plan.shrink);
    return document.edit(u"Fit Blockset"_s, [&] {
        const QString folder = document.workingFolder();
        Result result = applyShrink(plan.shrink, folder, document.packedEntries());
        QStringList written;
        for (auto it = contents.cbegin(); result && it != contents.cend(); ++it) {
            QSaveFile output(folder + u'/' + it.key());
            if (!output.open(QIODevice::WriteOnly) || output.write(it.value()) != it.value().size() || !output.commit())
                result = Result::failure(u"cannot write \"%1\": %2"_s.arg(it.key(), output.errorString()));
            else
                written.append(it.key());
        }
        // The new files packed as Shrink packs, so that the save keeps what Fit promised.
        if (result)
            result = applyShrink(planDocumentShrink(document), folder, document.packedEntries());
        for (const ShrinkPlan::Step &step : plan.shrink.steps) {
            if (step.rewrite)
                written.append(step.item.path);
        }
        refreshItemSizes(document, written);
        document.setBlocksetChanged();
        return result;
    });
}
