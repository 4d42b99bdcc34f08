// Polynomials in z, by rising power.
#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "filter/dfilter.h"

namespace torvik {

// `Number` is complex.
template <class Number>
struct Polynomial {
    std::array<Number, maxPoleZero + 1> coefficients;
    std::size_t degree = 0;
};

// The product of (z - root), whose leading coefficient is 1: in place, root by root.
template <class Number>
Polynomial<Number> expand(std::span<const Number> roots) {
    Polynomial<Number> product;
    auto& c = product.coefficients;
    auto& degree = product.degree;
    c[0] = 1.0;
    for (const Number& root : roots) {
        c[degree + 1] = c[degree];
        // What would be multiplied by the leading coefficient is taken as it is.
        c[degree] = degree > 0 ? c[degree - 1] - root : -root;
        for (std::size_t i = degree; i-- > 1;)
            c[i] = c[i - 1] - root * c[i];
        if (degree > 0) c[0] = -(root * c[0]);
        ++degree;
    }
    return product;
}

// By Horner's rule.
template <class Number, class Point>
Number evaluate(const Polynomial<Number>& polynomial, const Point& z) {
    Number sum = polynomial.coefficients[polynomial.degree];
    for (std::size_t i = polynomial.degree; i-- > 0;)
        sum = sum * z + polynomial.coefficients[i];
    return sum;
}

template <class Number, class Point>
Number evaluateRatio(const Polynomial<Number>& top, const Polynomial<Number>& bottom, const Point& z) {
    return evaluate(top, z) / evaluate(bottom, z);
}

}  // namespace torvik
