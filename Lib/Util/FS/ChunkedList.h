#pragma once

#include <QVector>

namespace Zendra::LW {

/// A list in which an insertion or a removal moves and copies the elements of one chunk at most, however long
/// the list is.
///
/// Implicitly shared, chunk by chunk. To visit all elements, iterate over GetChunks() and over each of them:
/// access by index has to look for the chunk.
template <typename T>
class ChunkedList
{
public:
    using Chunk = QVector<T>;

    static constexpr int chunkSize = 1024; ///< of a chunk that is full

    int size() const { return count; }
    /// In the order of their elements. None of them is empty.
    const QVector<Chunk>& GetChunks() const { return chunks; }

    const T& at(int index) const
    {
        const int chunk = FindChunk(index);
        return chunks.at(chunk).at(index);
    }

    T& operator[](int index)
    {
        const int chunk = FindChunk(index);
        return chunks[chunk][index];
    }

    void append(const T& element)
    {
        if (chunks.isEmpty() || chunks.constLast().size() >= chunkSize) {
            chunks.append(Chunk());
            chunks.last().reserve(chunkSize);
        }
        chunks.last().append(element);
        ++count;
    }

    /// @param index  at most size(), which appends
    void insert(int index, const T& element)
    {
        if (index == count) {
            append(element);
            return;
        }
        const int chunk = FindChunk(index);
        chunks[chunk].insert(index, element);
        ++count;
        if (chunks.at(chunk).size() > 2 * chunkSize)
            Split(chunk);
    }

    void removeAt(int index)
    {
        const int chunk = FindChunk(index);
        chunks[chunk].removeAt(index);
        --count;
        if (chunks.at(chunk).isEmpty())
            chunks.removeAt(chunk);
    }

private:
    /// @param index  that of an element; becomes its index in the chunk
    int FindChunk(int& index) const
    {
        int chunk = 0;
        while (index >= chunks.at(chunk).size())
            index -= static_cast<int>(chunks.at(chunk++).size());
        return chunk;
    }

    void Split(int chunk)
    {
        const Chunk whole = chunks.at(chunk);
        chunks[chunk] = whole.mid(0, chunkSize);
        chunks.insert(chunk + 1, whole.mid(chunkSize));
    }

    QVector<Chunk> chunks;
    int count = 0;
};

} // namespace Zendra::LW
