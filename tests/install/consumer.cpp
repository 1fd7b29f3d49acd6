#include <qx/qx.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

// Inline, exported and templated parts of the library, each once: is everything there, and does it link?
int main() {
  const CQXComplex<double> square = CQXComplex<double>(0, 2).Power(2);

  float row[4] = {4, 1, 3, 2};
  const CQXVectorN<float> vector(4, row);
  CQXStatistics<float> statistics(4, row);

  // Decompositions: a static library with link-time optimisation lacks what is instantiated in a second source.
  const double elements[9] = {4, 1, 0, 1, 3, 1, 0, 1, 2};
  const CQXMatrixN<double> matrix(3, elements);
  CQXMatrixMN<double> left(3, 3);
  CQXMatrixMN<double> right(3, 3);
  CQXVectorN<double> singular(3);
  const bool decomposed = matrix.SV_Decomposition(left, right, singular) == 0;

  float pixels[16 * 16];
  CQXRandom<float> random;
  random.SetUniform(0, 255);
  random.Initialize();
  random.GetArrayNumbers(16 * 16, pixels);
  CQXWaveletDecomposition<float> image(QX_WAVELET_2_6);
  image.SetImage(16, 16, 1, pixels);
  image.FWTInPlace(2, QX_CHANNEL_2D);
  float restored[16 * 16];
  image.GetImageInPixelForm(restored);
  float largestError = 0;
  for (int i = 0; i < 16 * 16; ++i) largestError = std::max(largestError, std::abs(restored[i] - pixels[i]));

  std::printf("(2i)^2 = %g, length %g, median %g, largest singular value %g, reconstruction within %g\n", square.Real(),
              vector.Length(), statistics.Median(), singular[0], largestError);
  const bool correct = decomposed && std::abs(square.Real() + 4) < 1e-12 && vector.SquareLength() == 30 &&
                       statistics.Median() == 2.5f && largestError < 1e-3f;
  return correct ? 0 : 1;
}
