// Preconditioned conjugate gradients for the held-boundary matting system.
#include "matting/held_laplacian_cg.h"

#include <cmath>

HeldSolveStats solveHeldLaplacian(const WindowLaplacian& op, const std::vector<int>& rows,
                                  std::vector<double>& alpha, int maxIter, double relTol) {
    HeldSolveStats st;
    const size_t n = rows.size();
    if (n == 0) return st;
    std::vector<double> scratch;
    std::vector<double> r(n), z(n), q(n), inv(op.diagonal(rows));
    for (double& d : inv) d = d > 0.0 ? 1.0 / d : 1.0;

    // r = -(L x)_U with the held values in place.
    op.apply(alpha.data(), rows, q.data(), scratch);
    double rz = 0.0, rr = 0.0;
    for (size_t k = 0; k < n; ++k) {
        r[k] = -q[k];
        z[k] = r[k] * inv[k];
        rz += r[k] * z[k];
        rr += r[k] * r[k];
    }
    st.startResidual = st.endResidual = std::sqrt(rr);
    const double stop = relTol * st.startResidual;
    // The search direction lives on a plane that is zero off the variables, so
    // that the product sees no held value.
    std::vector<double> dir(alpha.size(), 0.0);
    for (size_t k = 0; k < n; ++k) dir[rows[k]] = z[k];

    for (int it = 0; it < maxIter && st.endResidual > stop && rz > 0.0; ++it) {
        op.apply(dir.data(), rows, q.data(), scratch);
        double pq = 0.0;
        for (size_t k = 0; k < n; ++k) pq += dir[rows[k]] * q[k];
        if (!(pq > 0.0)) break;
        const double a = rz / pq;
        double rzNew = 0.0;
        rr = 0.0;
        for (size_t k = 0; k < n; ++k) {
            alpha[rows[k]] += a * dir[rows[k]];
            r[k] -= a * q[k];
            z[k] = r[k] * inv[k];
            rzNew += r[k] * z[k];
            rr += r[k] * r[k];
        }
        const double beta = rzNew / rz;
        rz = rzNew;
        for (size_t k = 0; k < n; ++k) dir[rows[k]] = z[k] + beta * dir[rows[k]];
        st.endResidual = std::sqrt(rr);
        st.iterations = it + 1;
    }
    return st;
}
