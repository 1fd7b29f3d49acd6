#pragma once

#include <qx/foundation/api.h>
#include <qx/foundation/block.h>
#include <qx/foundation/owner.h>
#include <qx/foundation/progress.h>
#include <qx/foundation/scalar.h>
#include <qx/wavelets/channel.h>
#include <qx/wavelets/wavelet_filter.h>
#include <qx/wavelets/wavelet_types.h>

#include <cstddef>
#include <cstdint>

/// The wavelet decomposition of an image: a filter and one channel for each image plane.
///
/// The road of an image with noise in it: SetImage(), SetTypeOfNormalization(QX_NORMALIZATION_2), FWT(), ReduceNoise(),
/// GetImageInPixelForm(). Pixels are interleaved: sample i of plane c stands at i x planes + c; rows run top to bottom.
///
/// A decomposition owns its channels and its filter, which all levels of all channels point to; copies are deep. A
/// decomposition is used by one thread at a time.
///
/// Members that give a new decomposition give null when they cannot make one. Every member takes the memory it needs
/// for all channels before it changes any: where `operator new[]` returns null, what would make a decomposition gives
/// null and what works in place leaves this one as it was, arrays of thresholds included; where it throws, the
/// exception passes through and everything is as it was.
template <qxReal T>
class QX_API CQXWaveletDecomposition : public qxBlockAllocated {
 public:
  /// Without filter and image.
  CQXWaveletDecomposition() noexcept = default;
  /// With the filter of a wavelet, without image; without filter when the memory was refused with null.
  explicit CQXWaveletDecomposition(qxWaveletType wavelet);
  /// A deep copy; without filter and image when the memory was refused with null.
  CQXWaveletDecomposition(const CQXWaveletDecomposition& other);
  CQXWaveletDecomposition(CQXWaveletDecomposition&& other) noexcept = default;
  /// A copy of the filter and of every channel.
  CQXWaveletDecomposition& operator=(const CQXWaveletDecomposition& other);
  ~CQXWaveletDecomposition() = default;

  /// A deep copy with a filter of its own.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> CloneDecomposition() const;
  /// Becomes a deep copy of the other one.
  void Copy(const CQXWaveletDecomposition& other);
  /// Destroys channels and filter.
  void Destroy() noexcept;

  /// Number of planes.
  [[nodiscard]] std::int32_t GetChannelsNb() const noexcept { return static_cast<std::int32_t>(m_channels.Count()); }
  /// The filter of all channels; null without one.
  [[nodiscard]] const CQXWaveletFilter<T>* GetFilter() const noexcept { return m_filter.get(); }
  /// The wavelet of the filter; -1 without one.
  [[nodiscard]] qxWaveletType GetWaveletType() const noexcept;
  /// The amplitude of the bands.
  [[nodiscard]] qxWaveletNormalization GetTypeOfNormalization() const noexcept { return m_normalization; }
  /// 1 when a channel is decomposed, else 0.
  [[nodiscard]] std::int32_t IsDecomposed() const noexcept;
  /// Columns and rows of channel 0; 0 without one.
  [[nodiscard]] std::int32_t GetImageWidth() const noexcept;
  /// Number of rows of the image.
  [[nodiscard]] std::int32_t GetImageHeight() const noexcept;
  /// The channel of a plane; null when there is none.
  [[nodiscard]] CQXChannel<T>* operator[](std::int32_t index) noexcept;
  [[nodiscard]] const CQXChannel<T>* operator[](std::int32_t index) const noexcept;
  /// Writes the depth that all channels have. @return 1; 0, and @p depth is untouched, when they differ or there is
  /// none.
  [[nodiscard]] std::int32_t HasCommonDepth(std::int32_t& depth) const noexcept;

  /// Replaces the channels by the planes of an image at offset (0, 0). @p data may be the samples of an old channel.
  void SetImage(std::int32_t width, std::int32_t height, std::int32_t channelsNb, const T* data);
  /// SetImage() of bytes.
  void Set8BitsImage(std::int32_t width, std::int32_t height, std::int32_t channelsNb, const std::uint8_t* data);

  /// Writes the pixels. A decomposed image is taken back first, with this filter and normalization, and stays raw:
  /// width x height x planes samples are written.
  /// Nothing is written when the memory for that is refused.
  void GetImageInPixelForm(T* data);
  /// Writes the pixels rounded to the nearest whole number, halves away from zero, of which the low byte is kept.
  ///
  /// Values wrap modulo 256 and do not saturate: 256 gives 0, 300 gives 44, -1 gives 255. Clamp samples to 0..255
  /// before, where a picture is wanted. Not a number, and what 64 bits cannot hold, gives 0; so does every sample of a
  /// plane without samples, a decomposed one among them.
  void GetImageIn8BitsFormat(std::uint8_t* data) const;

  /// Writes the pixels rounded to the nearest whole number, halves away from zero, and limited to what a byte or a word
  /// holds: the form for a picture that is looked at. Not a number gives 0, and so does every sample of a plane without
  /// samples, a decomposed one among them.
  void GetSaturatedImage(std::uint8_t* data) const;
  void GetSaturatedImage(std::uint16_t* data) const;

  /// Turns three raw planes red, green and blue into L = (R + G + B) / sqrt 3, (R - B) / sqrt 2 and
  /// (R - 2 G + B) / sqrt 6; see qxToOpponentColours(). An image of another number of planes, of planes of different
  /// sizes or of planes without samples is left alone. @return 1 when the planes were turned, else 0
  std::int32_t ToOpponentColours() noexcept;
  /// Turns them back: the inverse of that rotation is its transpose.
  std::int32_t FromOpponentColours() noexcept;

  /// Each plane in the form of CQXChannel::PackDecomposedChannel(): a raw decomposition, or interleaved into @p data.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> GetImageInPackedForm() const;
  void GetImageInPackedForm(T* data) const;
  /// The decomposition whose packed form the raw planes of this one are, with this filter; null when a plane cannot be
  /// unpacked.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> UnpackDecomposedImage(qxChannelType type, std::int32_t depth,
                                                                       qxWaveletNormalization normalization) const;

  /// Replaces the filter, whose place stays the same. A decomposed image is taken back first when the wavelet is
  /// another one.
  void SetFilter(qxWaveletType wavelet);
  /// Sets the normalization of this object and its channels. A decomposed image is taken back first when it has another
  /// one: set it before FWT().
  void SetTypeOfNormalization(qxWaveletNormalization normalization);
  /// SetFilter(), SetTypeOfNormalization() and SetDecompositionTypesToChannels().
  void SetDecompositionTypes(qxWaveletType wavelet, qxChannelType type, qxWaveletNormalization normalization);
  /// Sets the type of all channels. A tree of another type is taken back first.
  void SetDecompositionTypesToChannels(qxChannelType type);

  /// Replaces the channels by @p count planes of zeros at offset (0, 0).
  void CreateChannels(std::int32_t columns, std::int32_t rows, std::int32_t count);
  /// Destroys the channels and makes @p count empty slots.
  void SetChannelsNb(std::int32_t count);
  /// Takes ownership of a channel and hands it filter and normalization; a tree of another wavelet or normalization is
  /// taken back first, and so is every tree without a filter here. A bad index destroys @p channel.
  void SetChannel(qxOwner<CQXChannel<T>> channel, std::int32_t index);

  /// A new decomposition by CQXChannel::FWT() of every plane. The planes of a raw image are consumed: this object is
  /// left with empty channels. A decomposed image stays as it was and the result is deeper.
  /// @return null without filter or channels
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> FWT(std::int32_t depth, qxChannelType type);
  /// The same with a depth and a type for each channel.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> FWT(const std::int32_t* depths, const qxChannelType* types);
  /// FWT() with the depth of qxCalculateMaximumDepth(): of both sizes for QX_CHANNEL_2D, of the columns for
  /// QX_CHANNEL_ROWS, of the rows for QX_CHANNEL_COLUMNS.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> FWTMaxDepth(qxChannelType type);
  /// The same; writes the depth that was asked for.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> FWTMaxDepth(qxChannelType type, std::int32_t& depth);
  /// The same on this object.
  void FWTInPlace(std::int32_t depth, qxChannelType type);
  void FWTInPlace(const std::int32_t* depths, const qxChannelType* types);
  /// FWTMaxDepth() on this object.
  void FWTMaxDepthInPlace(qxChannelType type);

  /// The inverse transform as a new raw decomposition; this one stays as it is. @return null when a band is missing.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> IFWT() const;
  /// The inverse transform in place: CQXChannel::IFWTInPlace() of every channel.
  void IFWTInPlace();

  // The per-channel arrays below hold one entry for each channel.

  /// CQXChannel::EstimateThreshold() of every channel.
  void EstimateThresholds(T* thresholds, T* ratios) const;
  /// CQXChannel::CleanBelowThreshold() of every channel, as a new decomposition; the arrays are read and written.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> ReduceNoise(T* thresholds, T* ratios, std::int32_t soft,
                                                             qxWaveletDenoising method) const;
  /// The same for white noise of known deviations in the samples, one a channel.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> ReduceNoise(T* thresholds, T* ratios, std::int32_t soft,
                                                             qxWaveletDenoising method, const T* noises) const;
  /// CQXChannel::CleanDirectly() of every channel, as a new decomposition.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> ReduceNoiseDirectly(const T* thresholds, const T* ratios,
                                                                     std::int32_t soft) const;
  /// CQXChannel::CleanWithCircularShifts() of every plane of a raw image, as a new raw decomposition.
  /// @param progress called after each round of each plane; false ends the work
  /// @return null for a decomposed image, without filter, and when the work was ended
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> ReduceNoiseByCircularShifts(T* thresholds, T* ratios,
                                                                             std::int32_t shifts, std::int32_t depth,
                                                                             std::int32_t soft,
                                                                             qxWaveletDenoising method,
                                                                             const qxProgress& progress = {}) const;
  /// The same for white noise of known deviations in the samples, one a channel.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> ReduceNoiseByCircularShifts(T* thresholds, T* ratios,
                                                                             std::int32_t shifts, std::int32_t depth,
                                                                             std::int32_t soft,
                                                                             qxWaveletDenoising method, const T* noises,
                                                                             const qxProgress& progress = {}) const;
  /// CQXChannel::Enhance(), EnhanceHRLevel() and EnhanceSubLevel() of every channel.
  void EnhanceSharpFeatures(T factor);
  void EnhanceSharpFeatures(T factor, std::int32_t level);
  void EnhanceSharpFeatures(T factor, std::int32_t level, std::int32_t band);
  /// CQXChannel::EditByLevels() of every channel with the same factors.
  void EditByLevels(const T* factors);
  /// CQXChannel::MixByLevels() and Combine() of every pair of channels, as a new decomposition; null when the counts
  /// differ or a channel is missing.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> MixByLevels(const CQXWaveletDecomposition& other,
                                                             const T* weights) const;
  /// CQXChannel::Combine() of every pair of channels, as a new decomposition; null when the counts differ.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> Combine(const CQXWaveletDecomposition& other, T a, T b) const;

  /// 1 when the counts are equal and qxAreChannelsAlmostEqual() holds for each pair, else 0.
  [[nodiscard]] std::int32_t DecompositionsAreAlmostEqual(const CQXWaveletDecomposition& other,
                                                          T tolerance) const noexcept;

  /// CQXChannel::GetScaledHighChannel() and GetScaledLowChannel() of every channel, as a new raw decomposition; null
  /// when a channel has no such band.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> GetScaledHighImage(std::int32_t level, std::int32_t band) const;
  /// CQXChannel::GetScaledLowChannel() of every channel, as a new raw decomposition; null when a channel has none.
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> GetScaledLowImage() const;

 private:
  using Channels = qxOwnerArray<CQXChannel<T>>;

  void Adopt(CQXChannel<T>& channel) const noexcept;
  void AdoptAll() noexcept;
  [[nodiscard]] bool Fits(const CQXChannel<T>& channel) const noexcept;
  [[nodiscard]] bool HasAllChannels() const noexcept;
  template <typename Visitor>
  void VisitChannels(Visitor visit) const;
  template <typename Make>
  [[nodiscard]] bool MakeChannels(Channels& channels, Make make) const;
  template <typename Make>
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> MakeFromChannels(qxWaveletNormalization normalization,
                                                                  Make make) const;
  template <typename Select>
  [[nodiscard]] bool TakeBack(Select select);
  [[nodiscard]] bool Become(const CQXWaveletDecomposition& other);
  [[nodiscard]] static bool IsConsumed(const CQXChannel<T>& channel, std::int32_t depth, qxChannelType type);
  template <typename Depth, typename Type>
  [[nodiscard]] bool MakeTransformed(Channels& channels, Depth depth, Type type);
  template <typename Depth, typename Type>
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> Transformed(Depth depth, Type type);
  template <typename Depth, typename Type>
  void TransformInPlace(Depth depth, Type type);
  template <typename Clean>
  [[nodiscard]] qxOwner<CQXWaveletDecomposition> Cleaned(T* thresholds, T* ratios, Clean clean) const;
  template <typename Sample>
  void SetPixels(std::int32_t width, std::int32_t height, std::int32_t channelsNb, const Sample* data);
  template <typename Sample, typename Convert>
  void GetPixels(Sample* data, Convert convert) const;
  std::int32_t RotateColours(bool forward) noexcept;
  [[nodiscard]] std::int32_t MaximumDepth(qxChannelType type) const noexcept;

  qxOwner<CQXWaveletFilter<T>> m_filter;
  Channels m_channels;
  qxWaveletNormalization m_normalization = QX_NORMALIZATION_NONE;
};

extern template class QX_API CQXWaveletDecomposition<float>;
extern template class QX_API CQXWaveletDecomposition<double>;
