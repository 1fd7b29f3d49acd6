#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/owner.h>
#include <qx/foundation/progress.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/wavelet_filter.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstddef>
#include <cstdint>
#include <utility>

/// One plane of samples or, after a transform, the tree of sub-channels that replaces it.
///
/// A raw channel owns a row-major block of samples. A decomposed channel owns no samples at its own level but two or
/// four sub-channels (indices: qxSubChannelType), and its sub-channel 0, the low band, holds the next level. Level 1 is
/// the top of the tree, the finest one.
///
/// The offsets are the absolute coordinates of the first sample: along each transformed direction a sample with an even
/// coordinate belongs to the low band and one with an odd coordinate to the high band. A rectangle cut out of a picture
/// is therefore transformed just as it is inside the picture.
///
/// The channel owns its tree and its samples; the filter is only pointed to and must outlive it. Sizes and indices are
/// not checked unless a member says so. A channel is used by one thread at a time; distinct channels are independent.
///
/// Every member takes the memory it needs before it changes anything. Where `operator new[]` returns null, what would
/// make a channel gives null and what works in place leaves its channel as it was; where it throws, the exception
/// passes through and all channels are as they were.
template <qxReal T>
class QX_API CQXChannel : public qxBlockAllocated {
 public:
  // ---- Construction, fields and tree

  /// Empty: every field 0.
  CQXChannel() noexcept = default;
  /// Raw, without samples: Initialize() or SetData() gives them.
  CQXChannel(std::int32_t columns, std::int32_t rows, std::int32_t offsetX, std::int32_t offsetY) noexcept;
  /// Raw, with a copy of columns x rows samples; without samples when @p data is null or the memory was refused with
  /// null.
  CQXChannel(std::int32_t columns, std::int32_t rows, const T* data, std::int32_t offsetX, std::int32_t offsetY);
  /// Deep copy of samples and tree; empty when the memory was refused with null.
  CQXChannel(const CQXChannel& other);
  CQXChannel(CQXChannel&& other) noexcept { Swap(other); }
  /// Deep copy of samples and tree.
  CQXChannel& operator=(const CQXChannel& other);
  /// Takes the fields, samples and tree of the other channel, which is left with those of this one. A channel above or
  /// below this one in the same tree is copied.
  CQXChannel& operator=(CQXChannel&& other);  // NOLINT(performance-noexcept-move-constructor): it may have to copy
  ~CQXChannel() { DestroyTree(); }

  /// Takes a block of zeros of the channel's size. The samples that it had stay when the memory was refused.
  void Initialize();
  /// Frees samples and tree; columns, rows, count and flag become 0. Offsets, filter, type and normalization stay.
  void Destroy() noexcept;

  /// Columns of the channel, decomposed or not.
  [[nodiscard]] std::int32_t GetColsNb() const noexcept { return m_columns; }
  /// Rows of the channel, decomposed or not.
  [[nodiscard]] std::int32_t GetRowsNb() const noexcept { return m_rows; }
  /// Absolute column of the first sample.
  [[nodiscard]] std::int32_t GetOffsetX() const noexcept { return m_offsetX; }
  /// Absolute row of the first sample.
  [[nodiscard]] std::int32_t GetOffsetY() const noexcept { return m_offsetY; }
  /// 0 for a raw channel, 2 or 4 for a decomposed one.
  [[nodiscard]] std::int32_t GetSubChannelsNb() const noexcept { return m_subChannelsNb; }
  /// The filter, which the channel does not own; null without one.
  [[nodiscard]] const CQXWaveletFilter<T>* GetFilter() const noexcept { return m_filter; }
  /// The wavelet code of the filter; -1 without one.
  [[nodiscard]] qxWaveletType GetFilterType() const noexcept;
  /// How the channel was, or is to be, decomposed. A raw low band carries the type of its tree.
  [[nodiscard]] qxChannelType GetType() const noexcept { return m_type; }
  /// The normalization that FWT() applies and IFWT() takes back.
  [[nodiscard]] qxWaveletNormalization GetTypeOfNormalization() const noexcept { return m_normalization; }
  /// 1 for a channel with sub-channels, else 0.
  [[nodiscard]] std::int32_t IsDecomposed() const noexcept { return m_decomposed; }
  /// The samples; null on a decomposed or empty channel.
  [[nodiscard]] T* GetData() noexcept { return m_data.get(); }
  [[nodiscard]] const T* GetData() const noexcept { return m_data.get(); }

  /// Sizes of the low and the high band of the first level; the caller ensures a decomposed channel.
  [[nodiscard]] std::int32_t GetLowRowsNb() const noexcept { return m_subChannels[0]->m_rows; }
  /// Columns of the low band of the first level.
  [[nodiscard]] std::int32_t GetLowColsNb() const noexcept { return m_subChannels[0]->m_columns; }
  /// Rows of the high band of the first level.
  [[nodiscard]] std::int32_t GetHighRowsNb() const noexcept { return m_subChannels[1]->m_rows; }
  /// Columns of the high band of the first level.
  [[nodiscard]] std::int32_t GetHighColsNb() const noexcept { return m_subChannels[1]->m_columns; }

  /// Sets the three fields. A tree that was decomposed with another type than @p type is destroyed first, which leaves
  /// an empty channel.
  void SetDecompositionTypes(const CQXWaveletFilter<T>* filter, qxChannelType type,
                             qxWaveletNormalization normalization) noexcept;
  /// Sets the filter of this channel alone. A tree that was decomposed with another wavelet is destroyed first.
  void SetFilter(const CQXWaveletFilter<T>* filter) noexcept;
  /// Sets the type. A tree that was decomposed with another type is destroyed first.
  void SetType(qxChannelType type) noexcept;
  /// Sets the field alone: a tree keeps its values.
  void SetTypeOfNormalization(qxWaveletNormalization normalization) noexcept { m_normalization = normalization; }

  // Each sets one field and nothing else: the caller keeps the channel consistent.

  /// Takes ownership of a block of columns x rows samples, as qxMakeBlock() makes it.
  void SetData(qxBlock<T> data) noexcept { m_data = std::move(data); }
  void SetRowsNb(std::int32_t rows) noexcept { m_rows = rows; }
  void SetColsNb(std::int32_t columns) noexcept { m_columns = columns; }
  void SetOffsetX(std::int32_t offsetX) noexcept { m_offsetX = offsetX; }
  void SetOffsetY(std::int32_t offsetY) noexcept { m_offsetY = offsetY; }
  void SetDecompositionFlag(std::int32_t decomposed) noexcept { m_decomposed = decomposed; }
  /// Destroys the sub-channels and makes @p count empty slots, 0 to 4: a larger count gives 4.
  void SetSubChannelsNb(std::int32_t count) noexcept;
  /// Takes ownership of a sub-channel; the one that stood there is destroyed. A bad index destroys @p channel.
  void SetSubChannel(qxOwner<CQXChannel> channel, std::int32_t index) noexcept;

  /// The sub-channel at an index; null when there is none.
  [[nodiscard]] CQXChannel* operator[](std::int32_t index) noexcept { return SubChannel(index); }
  [[nodiscard]] const CQXChannel* operator[](std::int32_t index) const noexcept { return SubChannel(index); }
  [[nodiscard]] CQXChannel* SubChannel(std::int32_t index) noexcept;
  [[nodiscard]] const CQXChannel* SubChannel(std::int32_t index) const noexcept;
  /// The sub-channel at an index of a level, level 1 being this channel's own; null when there is none.
  [[nodiscard]] CQXChannel* SubChannel(std::int32_t level, std::int32_t index) noexcept;
  [[nodiscard]] const CQXChannel* SubChannel(std::int32_t level, std::int32_t index) const noexcept;

  /// The channel that this one is a sub-channel of; null at the top.
  [[nodiscard]] const CQXChannel* Parent() const noexcept { return m_parent; }

  /// The sample at a row and column of a raw channel; not checked.
  [[nodiscard]] T& operator()(std::int32_t row, std::int32_t column) noexcept { return m_data[Position(row, column)]; }
  [[nodiscard]] const T& operator()(std::int32_t row, std::int32_t column) const noexcept {
    return m_data[Position(row, column)];
  }

  /// Number of levels: steps down through sub-channel 0.
  [[nodiscard]] std::int32_t GetDepth() const noexcept;

  /// Copies filter, type and normalization to every channel of the tree.
  void Inherit() noexcept;

  /// Makes sub-channels of zeros with the sizes and offsets of those of @p source, and takes its type. Samples and tree
  /// of this channel are freed. A source without sub-channels gives none.
  void CreateOneLevelSubChannels(const CQXChannel& source);
  /// Makes sub-channels of zeros of one level, with sizes and offsets by the parity rule, and stores the three fields.
  /// Samples and tree of this channel are freed. A type that is no transform makes none and frees the tree alone.
  void CreateOneLevelSubChannels(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                 qxWaveletNormalization normalization);
  /// Turns the deepest level into a raw low band of zeros, so that the depth falls by one.
  void DestroyLowestSubChannel();

  /// A copy of the fields and samples of this channel, without its tree.
  [[nodiscard]] qxOwner<CQXChannel> CloneRawChannel() const;
  /// A deep copy, of a raw channel too.
  [[nodiscard]] qxOwner<CQXChannel> CloneDecomposedChannel() const;
  /// Makes @p target a level like this one: sizes, offsets and the three fields, and deep copies of the sub-channels.
  /// What it held is destroyed. Nothing happens without sub-channels here.
  void CloneOneLevelSubChannels(CQXChannel* target) const;
  /// Destroys what this channel holds and makes it CloneRawChannel() of the source.
  void CopyRawChannel(const CQXChannel& source);
  /// Destroys what this channel holds and makes it a deep copy of the source.
  void CopyDecomposedChannel(const CQXChannel& source);

  /// 1 when sizes and offsets are equal and either both channels have no samples or every pair of samples differs by at
  /// most @p tolerance; otherwise 0.
  [[nodiscard]] std::int32_t RawChannelIsAlmostEqual(const CQXChannel& other, T tolerance) const noexcept;

  // ---- Packed form, rectangles

  /// A raw channel of the same size and offsets that holds all coefficients, the low band at the origin.
  ///
  /// The high band stands right of the low one (type 1) or below it (type 2); for type 3 LH stands right of LL, HL
  /// below it and HH below LH. The next level stands in the place of the low band. A raw channel gives a copy.
  [[nodiscard]] qxOwner<CQXChannel> PackDecomposedChannel() const;
  /// The tree of @p depth levels whose packed form this raw channel is. Null without samples or filter, or when a level
  /// would be refused by FWTStep().
  [[nodiscard]] qxOwner<CQXChannel> UnpackDecomposedChannel(const CQXWaveletFilter<T>* filter, qxChannelType type,
                                                            std::int32_t depth,
                                                            qxWaveletNormalization normalization) const;

  /// A new channel with the samples, or the coefficients, of a rectangle.
  ///
  /// @p x and @p y are relative to the first sample; the offsets of the result keep the absolute place. From a tree
  /// every level gives the coefficients whose absolute places fall into the rectangle. Null when the rectangle is empty
  /// or not wholly inside.
  [[nodiscard]] qxOwner<CQXChannel> Cut(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) const;
  /// Cut() of a raw channel; null for a decomposed one.
  [[nodiscard]] qxOwner<CQXChannel> CutFromRawChannel(std::int32_t x, std::int32_t y, std::int32_t width,
                                                      std::int32_t height) const;
  /// Cut() of a decomposed channel; null for a raw one.
  [[nodiscard]] qxOwner<CQXChannel> CutFromDecomposedChannel(std::int32_t x, std::int32_t y, std::int32_t width,
                                                             std::int32_t height) const;
  /// CutFromDecomposedChannel() of a tree of type 1, 2 and 3; null for another one.
  [[nodiscard]] qxOwner<CQXChannel> CutRectForRows(std::int32_t x, std::int32_t y, std::int32_t width,
                                                   std::int32_t height) const;
  /// CutFromDecomposedChannel() of a tree of type 2; null for another one.
  [[nodiscard]] qxOwner<CQXChannel> CutRectForColumns(std::int32_t x, std::int32_t y, std::int32_t width,
                                                      std::int32_t height) const;
  /// CutFromDecomposedChannel() of a tree of type 3; null for another one.
  [[nodiscard]] qxOwner<CQXChannel> CutRectFor2D(std::int32_t x, std::int32_t y, std::int32_t width,
                                                 std::int32_t height) const;

  /// Writes the samples, or the coefficients, of @p source into this channel at the source's offsets.
  ///
  /// What falls outside is clipped. A tree goes only into a tree of the same type, wavelet and depth, and samples only
  /// into samples; otherwise nothing changes.
  void Paste(const CQXChannel& source);
  /// Paste() of samples alone.
  void PasteRawChannel(const CQXChannel& source);
  /// Paste() of a tree alone, and of a tree of type 1, 2 and 3 alone.
  void PasteDecomposedChannel(const CQXChannel& source);
  /// Paste() of a tree of type 1 alone.
  void PasteRectForRows(const CQXChannel& source);
  /// Paste() of a tree of type 2 alone.
  void PasteRectForColumns(const CQXChannel& source);
  /// Paste() of a tree of type 3 alone.
  void PasteRectFor2D(const CQXChannel& source);
  /// Paste() of the rectangle of a tree of type 1, 2 and 3, without the copy between; the rectangle is given as in
  /// Cut() of @p source and is clipped to it.
  void CutAndPasteRows(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                       std::int32_t height);
  /// Paste() of the rectangle of a tree of type 2, without the copy between.
  void CutAndPasteColumns(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width,
                          std::int32_t height);
  /// Paste() of the rectangle of a tree of type 3, without the copy between.
  void CutAndPaste2D(const CQXChannel& source, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);

  // ---- Print

  /// Writes the samples, or all bands level by level, to the standard output stream.
  void Print() const;

  // ---- Resampling

  /// A new raw channel of another size over the same picture, at offset (0, 0).
  ///
  /// The outer edges of both grids coincide: sample i of the new one stands at (i + 1/2) n / m - 1/2 of the old one,
  /// for n old and m new samples. Towards a coarser grid the kernel widens and averages what the grid cannot hold. At
  /// the edges the samples inside share the weight of those that are missing; equal samples give the very same number
  /// everywhere.
  /// @return null for a channel without samples, a size below 1, and when memory was refused with null
  [[nodiscard]] qxOwner<CQXChannel> Resize(std::int32_t columns, std::int32_t rows, qxResampling method) const;
  /// Resize() to the nearest sizes, at least 1, of the given factors; null also when a factor is not above 0 and finite
  /// or a size does not fit.
  [[nodiscard]] qxOwner<CQXChannel> Scale(double factorX, double factorY, qxResampling method) const;
  /// Half as many samples in both directions, rounded up: sample i stands at 2 i + 1/2, between two old ones. Else as
  /// Resize().
  [[nodiscard]] qxOwner<CQXChannel> ScaleRawChannelTwiceDown(qxResampling method) const;
  /// Twice as many samples in both directions: sample i stands at i / 2 - 1/4. Else as Resize().
  [[nodiscard]] qxOwner<CQXChannel> ScaleRawChannelTwiceUp(qxResampling method) const;

  // ---- Transform

  /// One level of the forward transform.
  ///
  /// A raw channel is consumed and the result is a new channel, owned by the caller. A decomposed channel hands the
  /// step to its deepest low band, and the result is this same channel.
  /// @return null when the step, or the memory for it, is refused and nothing has changed: without filter or samples;
  /// type 1 with fewer than 2 rows, type 2 with fewer than 2 columns (the direction that does not divide is tested:
  /// that is the contract), type 3 with fewer than 2 of either; a tree of another type or wavelet. An unknown type
  /// gives a new channel without sub-channels and leaves this one as it is.
  [[nodiscard]] CQXChannel* FWTStep(const CQXWaveletFilter<T>* filter, qxChannelType type);

  /// A new raw channel from a tree of one level whose bands are raw. The steps run in place: the bands change.
  /// @return null for a raw channel when a band is missing or of the wrong size, and without memory.
  [[nodiscard]] qxOwner<CQXChannel> IFWTStep();

  /// Deals the samples of a raw channel of this size out to the bands of this level, without arithmetic.
  void Split(const CQXChannel& source);
  /// Writes the samples of the bands of this level back to their places in @p target, without arithmetic.
  void Unite(CQXChannel* target) const;
  /// Runs the lifting steps of this channel's filter on two bands; direction 0 along columns, otherwise along rows.
  void LiftDirect(CQXChannel* low, CQXChannel* high, std::int32_t direction) const;
  /// The inverse of LiftDirect(): the steps are undone in reverse order.
  void LiftInverse(CQXChannel* low, CQXChannel* high, std::int32_t direction) const;

  /// The forward transform of @p depth levels, with the normalization of this channel.
  ///
  /// A raw channel is consumed: it is empty after the call, with all fields cleared. A decomposed channel stays as it
  /// was and the result has @p depth levels more. Levels that FWTStep() refuses are left out without a report. Types 1
  /// and 2 are never refused for the direction that divides: levels of one sample go on for as long as @p depth says,
  /// so take it from qxCalculateMaximumDepth().
  /// @return a new channel; a plain copy where nothing can be done (depth below 1, no level possible, unknown type, a
  /// tree of another type or wavelet); null without a filter or memory.
  [[nodiscard]] qxOwner<CQXChannel> FWT(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth);
  /// FWT() on this channel itself; nothing happens where FWT() gives a plain copy or null.
  void FWTInPlace(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth);

  /// The inverse transform; this channel stays as it is. A raw channel gives a copy.
  /// Every level goes back by its own type and wavelet. @return null when a band is missing.
  [[nodiscard]] qxOwner<CQXChannel> IFWT() const;
  /// A rectangle of the inverse transform, the same as Cut() of IFWT() without the work for the rest.
  /// @return null when a band is missing or the rectangle is empty or not wholly inside.
  [[nodiscard]] qxOwner<CQXChannel> IFWT(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) const;
  /// Turns this channel into the raw one; nothing happens to a raw channel or when a band is missing.
  void IFWTInPlace();
  /// The inverse transform that frees this channel's tree level by level while it goes; this channel is left empty. The
  /// peak is a block for the result and one for the low bands on the way, a quarter of it in two dimensions.
  /// @return null when a band is missing, and this channel stays as it is.
  [[nodiscard]] qxOwner<CQXChannel> DestroyingIFWT();

  /// Multiplies every band by the factor of its level: with `low` and `high` the norms, and a = low^2, b = low high,
  /// c = high^2 (low, high, high along one direction), the high bands of level L by b (or c) a^(L-1) and the lowest low
  /// band by a^depth. A factor within 0.000001 of 1 is left out.
  ///
  /// Levels of different types have each the factors of their own. No effect on a raw channel or with
  /// QX_NORMALIZATION_NONE. The forms with a depth leave deeper levels as they are.
  void Normalize();
  void Normalize(std::int32_t depth, qxWaveletNormalization normalization);
  void Normalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high);
  /// The same with 1 / low and 1 / high.
  void Denormalize();
  void Denormalize(std::int32_t depth, qxWaveletNormalization normalization);
  void Denormalize(std::int32_t depth, qxWaveletNormalization normalization, T low, T high);

  /// The lowest low band as a small picture: a raw copy at the scale where a constant picture keeps its value.
  /// @return a copy for a raw channel; null when the band is missing.
  [[nodiscard]] qxOwner<CQXChannel> GetScaledLowChannel() const;
  /// A raw copy of one high band, denormalised. @return null when there is no such band.
  [[nodiscard]] qxOwner<CQXChannel> GetScaledHighChannel(std::int32_t level, std::int32_t band) const;

  // ---- Noise reduction

  /// Noise of the finest high band: the median of the magnitudes of sub-channel 1, divided by 0.6745.
  ///
  /// With QX_NORMALIZATION_2 and family 2 it is about 0.75 of the deviation of white noise in the picture: it is the
  /// noise of the HH band, which is what thresholds are compared with.
  /// @return 0 for a raw channel; not a number for an empty band, or when memory was refused with null
  [[nodiscard]] T EstimateNoise() const;

  /// Deviation of white noise in the samples of a raw channel: the median magnitude of second differences in both
  /// directions, x (1 -2 1)(1 -2 1)^T, divided by 6 and by 0.6745, at every second row and column.
  ///
  /// It is what EstimateNoise() divided by qxDiagonalNoiseGain() says of the transform with QX_WAVELET_2_2. Differences
  /// with a sample that is not above @p lowest and below @p highest are left out: in a picture with large clipped areas
  /// they would all be 0. Infinite limits leave nothing out.
  /// @return not a number when nothing is left, or when memory was refused with null
  [[nodiscard]] T EstimateNoiseOfSamples(T lowest, T highest) const;

  /// Writes a threshold and the ratio between levels, from the variance of the bands less that of the noise. Both are 0
  /// for a raw channel; the ratio is 0 at depth 1; both are not a number when memory was refused with null.
  void EstimateThreshold(T& threshold, T& ratio) const;

  /// A new channel with the small coefficients of the high bands cleared; this one is not changed.
  ///
  /// Transform with QX_NORMALIZATION_2, and picture sides divisible by 2^depth. N is the number of samples of the whole
  /// channel, v the square of EstimateNoise(). A coefficient is cleared when its magnitude is not above the threshold
  /// of its band; with @p soft the others move towards zero by the threshold (Donoho and Johnstone, 1994; the rules by
  /// variance after Chang, Yu and Vetterli, 2000). A threshold that is not above 0.000001 leaves the band.
  /// @param threshold the threshold of QX_DENOISING_GIVEN. The other methods write the one of level 1: methods 1 and 2
  /// set it; methods 3 to 5 add each band's to it and divide by the number of bands, so begin with 0
  /// @param ratio the factor per level of QX_DENOISING_GIVEN; at a depth of 2 and more, the ratio of level 2 is
  /// written, unless the threshold it is divided by is 0
  /// @param soft 0 keeps what is above the threshold (hard rule), otherwise it shrinks
  /// @return a copy for a raw channel
  [[nodiscard]] qxOwner<CQXChannel> CleanBelowThreshold(T& threshold, T& ratio, std::int32_t soft,
                                                        qxWaveletDenoising method) const;
  /// The same for white noise of a known deviation in the samples: v is the square of @p noise times
  /// qxDiagonalNoiseGain(). QX_DENOISING_GIVEN does without it.
  [[nodiscard]] qxOwner<CQXChannel> CleanBelowThreshold(T& threshold, T& ratio, std::int32_t soft,
                                                        qxWaveletDenoising method, T noise) const;

  /// A new channel with every coefficient of the high bands below the threshold cleared: @p threshold at level 1,
  /// threshold x ratio at every other level, without a further power of the ratio. With @p soft the others shrink.
  /// @return a copy for a raw channel
  [[nodiscard]] qxOwner<CQXChannel> CleanDirectly(T threshold, T ratio, std::int32_t soft) const;

  /// Cleans the mean of many shifted copies, which takes away the traces of the grid (cycle spinning, Coifman and
  /// Donoho, 1995): one pass with the picture as it is, and @p shifts passes with it turned round by random distances
  /// of up to a quarter of its size. The distances are the same in every call.
  ///
  /// The first pass takes the normalization of this channel, the others QX_NORMALIZATION_2: set that one.
  /// @param threshold,ratio as in CleanBelowThreshold() for each pass anew; the means are written
  /// @param progress called after each pass; false ends the work
  /// @return a new raw channel; null for a decomposed channel, without a block of samples or a filter, and when the
  /// work was ended or memory was refused: threshold and ratio are then as they were. A copy for an empty block
  [[nodiscard]] qxOwner<CQXChannel> CleanWithCircularShifts(T& threshold, T& ratio, std::int32_t shifts,
                                                            const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                            std::int32_t soft, qxWaveletDenoising method,
                                                            const qxProgress& progress = {}) const;
  /// The same for white noise of a known deviation in the samples.
  [[nodiscard]] qxOwner<CQXChannel> CleanWithCircularShifts(T& threshold, T& ratio, std::int32_t shifts,
                                                            const CQXWaveletFilter<T>* filter, std::int32_t depth,
                                                            std::int32_t soft, qxWaveletDenoising method, T noise,
                                                            const qxProgress& progress = {}) const;
  /// Sets all samples of the tree to zero and keeps the tree.
  void Clean() noexcept;

  /// Largest of the centre (with its sign) and the magnitudes of the neighbours above, left, right and lower right.
  ///
  /// The lower right one counts where there is a next row, also from the last column, where it is the first sample of
  /// the row after that; beyond the block it does not count. Without columns it is 0.
  [[nodiscard]] T GetAbsMaxInMask(const T* data, std::int32_t index, std::int32_t columns,
                                  std::int32_t rows) const noexcept;

  // ---- Enhancement

  /// Multiplies the high bands by a factor that fades out towards coarser levels: it starts as @p factor and halves
  /// (doubles, for a factor of at most 1) per level until it reaches 1. No effect within 0.000001 of 1.
  void Enhance(T factor);
  /// Multiplies one band of a level, band 0 above the last level with all the tree that stands for it; nothing for a
  /// bad band or level.
  void EnhanceSubLevel(T factor, std::int32_t level, std::int32_t band);
  /// Multiplies the high bands of one level; nothing for a level beyond the depth.
  void EnhanceHRLevel(T factor, std::int32_t level);
  /// Multiplies the samples of this channel.
  void EnhanceRawData(T factor);
  /// Multiplies the high bands of level i + 1 by factors[i] and the lowest low band by factors[depth]: depth + 1
  /// numbers. Nothing for a raw channel.
  void EditByLevels(const T* factors);

  /// Blends two trees: every band of level i + 1 becomes (1 - w) this + w other with w = weights[i]; the lowest low
  /// band takes weights[depth]. Bands that @p other lacks (null lacks all), or has in another size, stay as here.
  /// @param result rebuilt as the blend; may be this channel or @p other. For null the blend is returned instead
  /// @return the blend when @p result is null, otherwise null
  qxOwner<CQXChannel> MixByLevels(const CQXChannel* other, const T* weights, CQXChannel* result) const;
  /// Combines two trees, or two raw channels: every coefficient becomes a this + b other. Else as MixByLevels().
  qxOwner<CQXChannel> Combine(const CQXChannel* other, T a, T b, CQXChannel* result) const;

 private:
  static constexpr std::int32_t largestSubChannelsNb = 4;

  [[nodiscard]] std::size_t Position(std::int32_t row, std::int32_t column) const noexcept {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(column);
  }

  [[nodiscard]] bool IsBelow(const CQXChannel& other) const noexcept;
  void Swap(CQXChannel& other) noexcept;
  void SwapSubChannels(CQXChannel& other) noexcept;
  void AdoptSubChannels() noexcept;
  void TakeLevel(CQXChannel& level) noexcept;
  void Clear() noexcept;
  void DestroyTree() noexcept;
  [[nodiscard]] bool Deepen(const CQXWaveletFilter<T>* filter, qxChannelType type, std::int32_t depth);
  [[nodiscard]] static qxOwner<CQXChannel> Deliver(qxOwner<CQXChannel> blend, CQXChannel* result);
  [[nodiscard]] bool IsTransformedBy(const CQXWaveletFilter<T>* filter, qxChannelType type) const noexcept;

  std::int32_t m_columns = 0;
  std::int32_t m_rows = 0;
  std::int32_t m_offsetX = 0;
  std::int32_t m_offsetY = 0;
  std::int32_t m_subChannelsNb = 0;
  qxOwner<CQXChannel> m_subChannels[largestSubChannelsNb];
  const CQXChannel* m_parent = nullptr;  // so that deep trees are walked through without a stack
  const CQXWaveletFilter<T>* m_filter = nullptr;
  qxChannelType m_type = QX_CHANNEL_RAW;
  qxBlock<T> m_data;
  qxWaveletNormalization m_normalization = QX_NORMALIZATION_NONE;
  std::int32_t m_decomposed = 0;
};

/// Deviation of the finest diagonal band (for QX_CHANNEL_ROWS and QX_CHANNEL_COLUMNS: of the finest high band) when the
/// samples are white noise of deviation 1. With QX_NORMALIZATION_2 it is 1, 0.75, 0.625 and 0.546875 for families 1
/// to 4.
template <qxReal T>
[[nodiscard]] QX_API T qxDiagonalNoiseGain(const CQXWaveletFilter<T>& filter, qxChannelType type,
                                           qxWaveletNormalization normalization) noexcept;

/// Number of halvings of a size until it is below 4: 0 below 4, 1 for 4 to 7, 2 for 8 to 15.
[[nodiscard]] QX_API std::int32_t qxCalculateMaximumDepth(std::int32_t size) noexcept;
/// The smaller of the two depths.
[[nodiscard]] QX_API std::int32_t qxCalculateMaximumDepth(std::int32_t a, std::int32_t b) noexcept;

/// Copies a rectangle from one row-major buffer to another; the strides are @p sourceColumns and @p targetColumns.
template <qxReal T>
QX_API void qxInsertPartRectData(const T* source, T* target, std::int32_t sourceColumns, std::int32_t sourceX,
                                 std::int32_t sourceY, std::int32_t targetColumns, std::int32_t targetX,
                                 std::int32_t targetY, std::int32_t width, std::int32_t height) noexcept;

/// Writes a tightly packed block of @p width by @p height into a row-major buffer at (x, y).
template <qxReal T>
inline void qxInsertRectData(const T* source, T* target, std::int32_t targetColumns, std::int32_t x, std::int32_t y,
                             std::int32_t width, std::int32_t height) noexcept {
  qxInsertPartRectData(source, target, width, 0, 0, targetColumns, x, y, width, height);
}

/// Takes the rectangle at (x, y) out of a row-major buffer into a tightly packed block.
template <qxReal T>
inline void qxExtractRectData(const T* source, std::int32_t columns, std::int32_t x, std::int32_t y, std::int32_t width,
                              std::int32_t height, T* target) noexcept {
  qxInsertPartRectData(source, target, columns, x, y, width, 0, 0, width, height);
}

/// 1 when both trees have the same structure and RawChannelIsAlmostEqual() holds for every pair of channels, else 0.
template <qxReal T>
[[nodiscard]] QX_API std::int32_t qxAreChannelsAlmostEqual(const CQXChannel<T>& a, const CQXChannel<T>& b,
                                                           qxNonDeduced<T> tolerance) noexcept;

extern template class QX_API CQXChannel<float>;
extern template class QX_API CQXChannel<double>;
