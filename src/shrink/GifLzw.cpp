#include "shrink/GifLzw.h"

#include <algorithm>
#include <bit>
#include <vector>

namespace {

constexpr int kMaxCodes = 4096; // GIF codes are at most 12 bits wide
constexpr int kSlots = 8192;    // the open-addressed dictionary: a power of two, twice the codes

// Codes packed least significant bit first, as GIF stores them.
class CodeWriter {
public:
    void put(int code, int width)
    {
        m_pending |= quint32(code) << m_bits;
        m_bits += width;
        for (; m_bits >= 8; m_bits -= 8, m_pending >>= 8)
            m_bytes.append(char(m_pending & 0xFF));
    }
    QByteArray finish()
    {
        if (m_bits > 0)
            m_bytes.append(char(m_pending & 0xFF));
        return m_bytes;
    }

private:
    QByteArray m_bytes;
    quint32 m_pending = 0;
    int m_bits = 0;
};

class Packer {
public:
    Packer(int minCodeSize, int limit) : m_minCodeSize(minCodeSize), m_limit(limit) {}

    QByteArray pack(QByteArrayView indices)
    {
        clear();
        if (indices.isEmpty()) {
            m_out.put(end(), width());
            return m_out.finish();
        }
        int prefix = quint8(indices[0]);
        for (qsizetype i = 1; i < indices.size(); ++i) {
            const int pixel = quint8(indices[i]);
            const int key = prefix << 8 | pixel;
            int slot = int(quint32(key) * 2654435761U >> 19) & (kSlots - 1);
            while (m_keys[size_t(slot)] >= 0 && m_keys[size_t(slot)] != key)
                slot = (slot + 1) & (kSlots - 1);
            if (m_keys[size_t(slot)] == key) {
                prefix = m_codes[size_t(slot)];
                continue;
            }
            send(prefix);
            if (m_next < m_limit) {
                m_keys[size_t(slot)] = key;
                m_codes[size_t(slot)] = m_next++;
            } else {
                clear();
            }
            prefix = pixel;
        }
        send(prefix);
        m_out.put(end(), width());
        return m_out.finish();
    }

private:
    int clearCode() const { return 1 << m_minCodeSize; }
    int end() const { return clearCode() + 1; }

    // A decoder widens its codes once its dictionary reaches the next power of
    // two; it adds an entry for every code but the first after a clear, one
    // code later than the encoder. The width follows the decoder's count.
    int width() const
    {
        return std::min(12, std::max(m_minCodeSize + 1, int(std::bit_width(unsigned(m_decoderNext)))));
    }

    void send(int code)
    {
        m_out.put(code, width());
        if (!m_afterClear && m_decoderNext < kMaxCodes)
            ++m_decoderNext;
        m_afterClear = false;
    }

    void clear()
    {
        m_out.put(clearCode(), width());
        std::fill(m_keys.begin(), m_keys.end(), -1);
        m_next = m_decoderNext = end() + 1;
        m_afterClear = true;
    }

    const int m_minCodeSize;
    const int m_limit;
    CodeWriter m_out;
    std::vector<int> m_keys = std::vector<int>(kSlots, -1);
    std::vector<int> m_codes = std::vector<int>(kSlots, 0);
    int m_next = 0;
    int m_decoderNext = 0;
    bool m_afterClear = true;
};

} // namespace

QByteArray packGifCodes(QByteArrayView indices, int minCodeSize)
{
    QByteArray best;
    for (int bits = minCodeSize + 1; bits <= 12; ++bits) {
        QByteArray packed = Packer(minCodeSize, 1 << bits).pack(indices);
        if (best.isEmpty() || packed.size() < best.size())
            best = std::move(packed);
    }
    return best;
}
