#include "builders/hartley.h"

namespace kfpg::gen {

RealDftOptions hartleyOptions(bool singlePrecision) {
    RealDftOptions options;
    options.wideProducts = singlePrecision;
    options.wideSums = singlePrecision;
    return options;
}

std::vector<NodeId> buildHartley(Dag& dag, const std::vector<NodeId>& x, const RealDftOptions& options) {
    const int n = static_cast<int>(x.size());
    const HalfSpectrum X = buildRealDft(dag, x, options);
    std::vector<NodeId> h(n);
    h[0] = X.re[0];
    for (int k = 1; 2 * k < n; ++k) {
        h[k] = dag.sub(X.re[k], X.im[k]);
        h[n - k] = dag.add(X.re[k], X.im[k]);
    }
    if (n % 2 == 0) h[n / 2] = X.re[n / 2];
    return h;
}

}  // namespace kfpg::gen
