// Numbers of twice a double's precision: the unevaluated sum of two doubles, the second at most half a unit in the last
// place of the first. For what would lose digits in doubles, such as the value of a polynomial close to its roots.
//
// The formulas are the classic error-free transformations: the sum of two doubles with its rounding error by D. E.
// Knuth (The Art of Computer Programming, volume 2, 4.2.2), the product by T. J. Dekker and G. W. Veltkamp (T. J.
// Dekker, "A floating-point technique for extending the available precision", Numerische Mathematik 18, 1971); the
// arithmetic on top of them is that of M. Joldes, J.-M. Muller and V. Popescu, "Tight and rigorous error bounds for
// basic building blocks of double-word arithmetic", ACM Transactions on Mathematical Software 44, 2017. They need every
// operation rounded as it is written: no fused multiplication and addition, no reordering. Numbers above 1e300 give
// NaN.
#pragma once

#include <cmath>
#include <complex>

namespace torvik {

struct Doubled {
    double high;
    double low;

    Doubled() = default;  // of no value
    // Every double is one.
    constexpr Doubled(double value) : high(value), low(0) {}  // NOLINT(google-explicit-constructor)
    constexpr Doubled(double highPart, double lowPart) : high(highPart), low(lowPart) {}

    friend constexpr bool operator==(Doubled, Doubled) = default;

    // The nearest double.
    constexpr double rounded() const { return high; }
};

namespace doubled {

inline constexpr Doubled pi{3.141592653589793116, 1.224646799147353207e-16};

// a + b without loss.
constexpr Doubled exactSum(double a, double b) {
    const double sum = a + b;
    const double ofB = sum - a;
    return {sum, (a - (sum - ofB)) + (b - ofB)};
}

// The same where |a| >= |b| or a is 0.
constexpr Doubled exactSumOrdered(double a, double b) {
    const double sum = a + b;
    return {sum, b - (sum - a)};
}

// a as the sum of two numbers of 26 bits, so that their products are exact.
constexpr Doubled split(double a) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    const double scaled = splitter * a;
    const double high = scaled - (scaled - a);
    return {high, a - high};
}

// a * b without loss.
constexpr Doubled exactProduct(double a, double b) {
    const double product = a * b;
    const Doubled x = split(a);
    const Doubled y = split(b);
    return {product, ((x.high * y.high - product) + x.high * y.low + x.low * y.high) + x.low * y.low};
}

}  // namespace doubled

inline bool isFinite(Doubled a) {
    return std::isfinite(a.high);
}

constexpr Doubled operator-(Doubled a) {
    return {-a.high, -a.low};
}

// With an error relative to the larger of the two.
constexpr Doubled operator+(Doubled a, Doubled b) {
    const Doubled sum = doubled::exactSum(a.high, b.high);
    return doubled::exactSumOrdered(sum.high, sum.low + (a.low + b.low));
}

constexpr Doubled operator-(Doubled a, Doubled b) {
    return a + -b;
}

constexpr Doubled operator*(Doubled a, Doubled b) {
    const Doubled product = doubled::exactProduct(a.high, b.high);
    return doubled::exactSumOrdered(product.high, product.low + (a.low * b.high + a.high * b.low));
}

constexpr Doubled operator*(Doubled a, double b) {
    const Doubled product = doubled::exactProduct(a.high, b);
    return doubled::exactSumOrdered(product.high, product.low + a.low * b);
}

constexpr Doubled operator/(Doubled a, Doubled b) {
    const double quotient = a.high / b.high;
    const Doubled rest = a - b * quotient;
    return doubled::exactSumOrdered(quotient, rest.high / b.high);
}

constexpr Doubled operator/(Doubled a, double b) {
    return a / Doubled(b);
}

inline Doubled sqrt(Doubled a) {
    const double root = std::sqrt(a.high);
    if (!(root > 0)) return root;
    const Doubled rest = a - doubled::exactProduct(root, root);
    return doubled::exactSumOrdered(root, rest.high / (2.0 * root));
}

struct DoubledComplex {
    Doubled real;
    Doubled imaginary;

    DoubledComplex() = default;                                                   // of no value
    constexpr DoubledComplex(double realPart) : real(realPart), imaginary(0) {}   // NOLINT(google-explicit-constructor)
    constexpr DoubledComplex(Doubled realPart) : real(realPart), imaginary(0) {}  // NOLINT
    constexpr DoubledComplex(Doubled realPart, Doubled imaginaryPart) : real(realPart), imaginary(imaginaryPart) {}
    explicit DoubledComplex(const std::complex<double>& value) : real(value.real()), imaginary(value.imag()) {}

    friend constexpr bool operator==(const DoubledComplex&, const DoubledComplex&) = default;

    std::complex<double> rounded() const { return {real.rounded(), imaginary.rounded()}; }
};

constexpr DoubledComplex conjugate(const DoubledComplex& a) {
    return {a.real, -a.imaginary};
}

constexpr DoubledComplex operator-(const DoubledComplex& a) {
    return {-a.real, -a.imaginary};
}

constexpr DoubledComplex operator+(const DoubledComplex& a, const DoubledComplex& b) {
    return {a.real + b.real, a.imaginary + b.imaginary};
}

constexpr DoubledComplex operator-(const DoubledComplex& a, const DoubledComplex& b) {
    return {a.real - b.real, a.imaginary - b.imaginary};
}

constexpr DoubledComplex operator*(const DoubledComplex& a, const DoubledComplex& b) {
    return {a.real * b.real - a.imaginary * b.imaginary, a.real * b.imaginary + a.imaginary * b.real};
}

constexpr DoubledComplex operator*(const DoubledComplex& a, Doubled b) {
    return {a.real * b, a.imaginary * b};
}

constexpr DoubledComplex operator*(const DoubledComplex& a, double b) {
    return {a.real * b, a.imaginary * b};
}

constexpr Doubled squaredMagnitude(const DoubledComplex& a) {
    return a.real * a.real + a.imaginary * a.imaginary;
}

// A divisor so small that its square vanishes gives what doubles give, with an infinity where they have one.
inline DoubledComplex operator/(const DoubledComplex& a, const DoubledComplex& b) {
    const Doubled square = squaredMagnitude(b);
    if (square.high == 0) return DoubledComplex(a.rounded() / b.rounded());
    return a * conjugate(b) * (1.0 / square);
}

inline DoubledComplex operator/(Doubled a, const DoubledComplex& b) {
    const Doubled square = squaredMagnitude(b);
    if (square.high == 0) return DoubledComplex(a.rounded() / b.rounded());
    return conjugate(b) * (a / square);
}

inline Doubled magnitude(const DoubledComplex& a) {
    return sqrt(squaredMagnitude(a));
}

// The principal root.
inline DoubledComplex sqrt(const DoubledComplex& a) {
    const bool leftHalf = a.real.high < 0;
    const Doubled larger = sqrt((magnitude(a) + (leftHalf ? -a.real : a.real)) * 0.5);
    if (larger.high == 0) return 0.0;
    const Doubled smaller = a.imaginary / (larger * 2.0);
    if (!leftHalf) return {larger, smaller};
    return a.imaginary.high < 0 ? DoubledComplex(-smaller, -larger) : DoubledComplex(smaller, larger);
}

}  // namespace torvik
