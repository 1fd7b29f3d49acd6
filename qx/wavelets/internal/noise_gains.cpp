#include <qx/wavelets/channel.h>
#include <qx/wavelets/internal/noise_gains.h>

#include <cstdlib>

namespace {

constexpr std::int32_t length = 64;
using Taps = std::array<double, length>;
/// Values at the lags from -length to length.
using Lags = std::array<double, 2 * length + 1>;

double At(const Lags& lags, std::int32_t lag) {
  return std::abs(lag) <= length ? lags[static_cast<std::size_t>(lag + length)] : 0;
}

/// The filters of one level, read off the coefficients in the middle of a signal as an impulse moves through it.
bool FindFilters(qxWaveletType wavelet, Taps& low, Taps& high) {
  const CQXWaveletFilter<double> filter(wavelet);
  for (std::int32_t i = 0; i < length; ++i) {
    // Two rows: a transform along rows wants no fewer.
    CQXChannel<double> signal(length, 2, 0, 0);
    signal.SetTypeOfNormalization(QX_NORMALIZATION_2);
    signal.Initialize();
    if (signal.GetData() == nullptr) return false;
    signal(0, i) = 1;
    signal.FWTInPlace(&filter, QX_CHANNEL_ROWS, 1);
    if (signal.IsDecomposed() == 0) return false;
    low[static_cast<std::size_t>(i)] = (*signal.SubChannel(QX_SUBCHANNEL_LOW))(0, length / 4);
    high[static_cast<std::size_t>(i)] = (*signal.SubChannel(QX_SUBCHANNEL_HIGH))(0, length / 4);
  }
  return true;
}

Lags Autocorrelation(const Taps& taps) {
  Lags result = {};
  for (std::size_t i = 0; i < taps.size(); ++i) {
    for (std::size_t k = 0; k < taps.size(); ++k) result[i + length - k] += taps[i] * taps[k];
  }
  return result;
}

/// Autocovariance of every second output of a filter at one lag, from that of its input.
double Covariance(const Lags& input, const Lags& filter, std::int32_t lag) {
  double sum = 0;
  for (std::int32_t i = -length; i <= length; ++i) sum += At(filter, i) * At(input, 2 * lag - i);
  return sum;
}

}  // namespace

bool NoiseGains::Find(qxWaveletType wavelet) {
  Taps lowTaps = {}, highTaps = {};
  if (!FindFilters(wavelet, lowTaps, highTaps)) return false;
  const Lags low = Autocorrelation(lowTaps), high = Autocorrelation(highTaps);
  Lags noise = {};
  noise[length] = 1;
  for (std::size_t level = 1; level <= deepest; ++level) {
    m_high[level] = Covariance(noise, high, 0);
    Lags next = {};
    for (std::int32_t lag = -length; lag <= length; ++lag) {
      next[static_cast<std::size_t>(lag + length)] = Covariance(noise, low, lag);
    }
    noise = next;
    m_low[level] = noise[length];
  }
  return true;
}

double NoiseGains::Variance(std::int32_t level, std::int32_t band) const noexcept {
  const auto index = static_cast<std::size_t>(level);
  const double columns = band == QX_SUBCHANNEL_HH || band == QX_SUBCHANNEL_LH ? m_high[index] : m_low[index];
  const double rows = band == QX_SUBCHANNEL_HH || band == QX_SUBCHANNEL_HL ? m_high[index] : m_low[index];
  return columns * rows;
}
