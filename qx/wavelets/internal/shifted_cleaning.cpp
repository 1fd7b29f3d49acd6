#include <qx/arrays/random.h>
#include <qx/foundation/internal/instantiate.h>
#include <qx/kernels/array_kernels.h>
#include <qx/wavelets/internal/channel_transform.h>
#include <qx/wavelets/internal/denoising.h>

#include <algorithm>
#include <limits>

namespace qxInternal {

namespace {

/// The rows of a picture that is turned round: what stands at (row, column) belongs to (row + down, column + right).
/// Read, they are put together in the spare row; written, they are added to the picture.
template <typename Sample>
struct TurnedRows {
  Sample* block;
  std::int32_t columns, rows;
  std::int32_t down, right;  // less than the sizes

  [[nodiscard]] Sample* RowAt(std::int32_t row) const {
    return block + ((std::ptrdiff_t{row} + rows - down) % rows) * columns;
  }
};

template <qxReal T>
struct ReadTurned : TurnedRows<const T> {
  [[nodiscard]] const T* Begin(std::int32_t row, T* spare) const {
    const T* const source = this->RowAt(row);
    std::copy_n(source, this->columns - this->right, spare + this->right);
    std::copy_n(source + (this->columns - this->right), this->right, spare);
    return spare;
  }
};

template <qxReal T>
struct AddTurned : TurnedRows<T> {
  [[nodiscard]] T* Begin(std::int32_t, T* spare) const { return spare; }
  void End(std::int32_t row, const T* spare) const {
    T* const target = this->RowAt(row);
    const auto straight = static_cast<std::size_t>(this->columns - this->right);
    qxKernels::Add(straight, spare + this->right, target);
    qxKernels::Add(static_cast<std::size_t>(this->right), spare, target + straight);
  }
};

/// The distances of the rounds: up to a quarter of the size, the same in every call.
template <qxReal T>
class ShiftSchedule {
 public:
  ShiftSchedule() {
    m_random.SetUniform(0, 1);
    m_random.Initialize();
  }

  [[nodiscard]] std::int32_t Distance(std::int32_t size) {
    // The generator may step one beyond its ends.
    return static_cast<std::int32_t>((std::int64_t{m_random.GetIntegerNumber32(0, size / 4)} + size) % size);
  }

 private:
  CQXRandom<T> m_random;
};

}  // namespace

template <qxReal T>
qxOwner<CQXChannel<T>> CleanShifted(const CQXChannel<T>& picture, std::int32_t shifts,
                                    const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                    const ThresholdCleaning<T>& cleaning, T& threshold, T& ratio,
                                    const qxProgress& progress) {
  if (picture.IsDecomposed() != 0 || picture.GetData() == nullptr || filter == nullptr) return nullptr;
  qxOwner<CQXChannel<T>> sum = CloneRaw(picture);
  if (sum == nullptr || CountOf(picture) == 0) return sum;
  std::fill_n(sum->GetData(), CountOf(picture), T(-0.0));  // unlike 0 it keeps the sign of what is added

  const Rect extent = Extent(picture);
  const std::int32_t columns = picture.GetColsNb();
  const std::int32_t rows = picture.GetRowsNb();
  const bool hasLevels = AllowedDepth(QX_CHANNEL_2D, extent, depth) > 0;
  const std::int32_t rounds = std::clamp(shifts, 0, std::numeric_limits<std::int32_t>::max() - 1);
  T thresholds = 0;
  T ratios = 0;
  ShiftSchedule<T> schedule;
  for (std::int32_t round = 0; round <= rounds; ++round) {
    const std::int32_t down = round > 0 ? schedule.Distance(rows) : 0;
    const std::int32_t right = round > 0 ? schedule.Distance(columns) : 0;
    const qxWaveletNormalization normalization = round > 0 ? QX_NORMALIZATION_2 : picture.GetTypeOfNormalization();
    // Every round begins with the caller's two values.
    T a = threshold;
    T b = ratio;
    if (hasLevels) {
      const ReadTurned<T> source{{picture.GetData(), columns, rows, down, right}};
      const AddTurned<T> target{{sum->GetData(), columns, rows, down, right}};
      const auto tree = ForwardTransform<T>(extent, source, filter, QX_CHANNEL_2D, depth, normalization);
      if (tree == nullptr || !cleaning.Clean(*tree, a, b) || !InverseTransform(*tree, target, true)) return nullptr;
    } else {
      qxKernels::Add(CountOf(picture), picture.GetData(), sum->GetData());
    }
    thresholds += a;
    ratios += b;
    if (!progress.Report(round + 1, rounds + 1)) return nullptr;
  }
  const T factor = 1 / (static_cast<T>(rounds) + 1);
  MultiplySamples(*sum, factor);
  threshold = thresholds * factor;
  ratio = ratios * factor;
  return sum;
}

#define QX_INSTANTIATE(T)                                                                                      \
  template qxOwner<CQXChannel<T>> CleanShifted(const CQXChannel<T>&, std::int32_t, const CQXWaveletFilter<T>*, \
                                               std::int32_t, const ThresholdCleaning<T>&, T&, T&, const qxProgress&);
QX_FOR_FLOAT_AND_DOUBLE(QX_INSTANTIATE)
#undef QX_INSTANTIATE

}  // namespace qxInternal
