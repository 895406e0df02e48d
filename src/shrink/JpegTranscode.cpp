#include "shrink/JpegTranscode.h"

#include "shrink/JpegImage.h"
#include "shrink/ShrinkResult.h"

// clang-format off
#include <cstdio> // jpeglib.h needs FILE
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include <csetjmp>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

// libjpeg ends a failed call through error_exit, which must not return: it
// jumps back to the setjmp of transcode(), whose frame holds only C structs.
struct ErrorManager {
    jpeg_error_mgr pub;
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

void onError(j_common_ptr info)
{
    auto *manager = reinterpret_cast<ErrorManager *>(info->err);
    (*info->err->format_message)(info, manager->message);
    std::longjmp(manager->jump, 1);
}

void silent(j_common_ptr) {}

// An output buffer that doubles as it fills; freed by the caller in every case.
struct GrowingDestination {
    jpeg_destination_mgr pub;
    JOCTET *data;
    size_t capacity;
};

void initDestination(j_compress_ptr info)
{
    auto *destination = reinterpret_cast<GrowingDestination *>(info->dest);
    destination->capacity = 64 * 1024;
    destination->data = static_cast<JOCTET *>(std::malloc(destination->capacity));
    if (!destination->data)
        ERREXIT1(info, JERR_OUT_OF_MEMORY, 0);
    destination->pub.next_output_byte = destination->data;
    destination->pub.free_in_buffer = destination->capacity;
}

boolean growDestination(j_compress_ptr info)
{
    auto *destination = reinterpret_cast<GrowingDestination *>(info->dest);
    const size_t used = destination->capacity;
    auto *grown = static_cast<JOCTET *>(std::realloc(destination->data, used * 2));
    if (!grown)
        ERREXIT1(info, JERR_OUT_OF_MEMORY, 1);
    destination->data = grown;
    destination->capacity = used * 2;
    destination->pub.next_output_byte = grown + used;
    destination->pub.free_in_buffer = used;
    return TRUE;
}

void termDestination(j_compress_ptr) {}

// Without a JFIF or Adobe marker a reader (IJG 6a as well as libjpeg-turbo)
// takes three components for YCbCr unless their ids are 'R', 'G', 'B'; one
// component is always grey. So the JFIF marker is needed only for YCbCr with
// those ids.
bool needsJfifMarker(const jpeg_compress_struct &target)
{
    if (!target.write_JFIF_header || target.jpeg_color_space != JCS_YCbCr || target.num_components != 3)
        return false;
    const jpeg_component_info *components = target.comp_info;
    return components[0].component_id == 'R' && components[1].component_id == 'G' && components[2].component_id == 'B';
}

// Returns the number of bytes written to destination->data, or 0 with message set.
size_t transcode(const JOCTET *input, unsigned long size, bool progressive, GrowingDestination *destination,
                 char *message)
{
    ErrorManager errors;
    jpeg_decompress_struct source;
    jpeg_compress_struct target;
    std::memset(&source, 0, sizeof source);
    std::memset(&target, 0, sizeof target);
    source.err = target.err = jpeg_std_error(&errors.pub);
    errors.pub.error_exit = onError;
    errors.pub.output_message = silent;
    errors.message[0] = 0;
    if (setjmp(errors.jump)) {
        jpeg_destroy_compress(&target);
        jpeg_destroy_decompress(&source);
        std::memcpy(message, errors.message, JMSG_LENGTH_MAX);
        return 0;
    }
    jpeg_create_decompress(&source);
    jpeg_create_compress(&target);
    jpeg_mem_src(&source, input, size);
    jpeg_read_header(&source, TRUE);
    if (source.num_components == 4)
        ERREXIT(&source, JERR_CONVERSION_NOTIMPL); // four channels are never written
    jvirt_barray_ptr *coefficients = jpeg_read_coefficients(&source);
    if (source.err->num_warnings > 0)
        ERREXIT(&source, JERR_INPUT_EOF); // damaged data: its coefficients are not trusted
    jpeg_copy_critical_parameters(&source, &target);
    target.optimize_coding = TRUE;
    target.arith_code = FALSE;
    target.write_JFIF_header = needsJfifMarker(target) ? TRUE : FALSE;
    if (progressive)
        jpeg_simple_progression(&target);
    destination->pub.init_destination = initDestination;
    destination->pub.empty_output_buffer = growDestination;
    destination->pub.term_destination = termDestination;
    target.dest = &destination->pub;
    jpeg_write_coefficients(&target, coefficients);
    jpeg_finish_compress(&target);
    jpeg_finish_decompress(&source);
    const size_t written = destination->capacity - destination->pub.free_in_buffer;
    jpeg_destroy_compress(&target);
    jpeg_destroy_decompress(&source);
    return written;
}

} // namespace

QByteArray transcodeJpeg(QByteArrayView bytes, bool progressive, QString *error)
{
    JpegHeader header;
    if (!readJpegHeader(bytes, &header, error))
        return {};
    if (qint64(header.width) * header.height > maxRewritePixels) {
        *error = u"too many pixels to rewrite (%1×%2)"_s.arg(header.width).arg(header.height);
        return {};
    }
    GrowingDestination destination{};
    char message[JMSG_LENGTH_MAX] = {};
    const size_t written = transcode(reinterpret_cast<const JOCTET *>(bytes.data()),
                                     static_cast<unsigned long>(bytes.size()), progressive, &destination, message);
    QByteArray output;
    if (written > 0)
        output = QByteArray(reinterpret_cast<const char *>(destination.data), qsizetype(written));
    else
        *error = u"the JPEG cannot be rewritten: %1"_s.arg(QString::fromLocal8Bit(message));
    std::free(destination.data);
    return output;
}

QByteArray smallestJpegRewrite(QByteArrayView bytes, QString *error)
{
    QByteArray baseline = transcodeJpeg(bytes, false, error);
    QByteArray progressive = transcodeJpeg(bytes, true, error);
    if (baseline.isEmpty() || (!progressive.isEmpty() && progressive.size() < baseline.size()))
        return progressive;
    return baseline;
}
