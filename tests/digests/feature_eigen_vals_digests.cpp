#include "digests/digest.h"
#include "qelcv/feature.h"

namespace {

// Results of `values` numbers for each pixel, from Sobel's derivatives of both apertures and from Scharr's.
template <auto query, int values>
struct Corners {
    template <class T>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const T*, int, Qel32f*, int, QelSize, int, int, int, Qel8u*)) const {
        const auto src = c.input<T>();
        qelStatus status = qelStatusOk;
        struct Derivatives {
            int kernType, aperture;
        };
        for (const auto [kernType, aperture] : {Derivatives{0, 3}, {0, 5}, {1, 3}}) {
            const int window = 8 - aperture;
            int bytes = 0;
            query(c.size(), aperture, window, &bytes);
            const auto dst = c.output<Qel32f>({c.size().width * values, c.size().height}, 1);
            if (status == qelStatusOk) {
                status = function(src.data, src.step, dst.data, dst.step, c.size(), kernType, aperture, window,
                                  c.scratch(bytes));
            }
        }
        return status;
    }
};

qelStatus query(digest::Call& c, qelStatus (*function)(QelSize, int, int, int*)) {
    function(c.size(), 3, 5, c.results<int>(1));
    return function(c.size(), 5, 3, c.results<int>(1));
}

}  // namespace

DIGESTS((Corners<qeliMinEigenValGetBufferSize_8u32f_C1R, 1>()), qeliMinEigenVal_8u32f_C1R);
DIGESTS((Corners<qeliMinEigenValGetBufferSize_32f_C1R, 1>()), qeliMinEigenVal_32f_C1R);
DIGESTS((Corners<qeliEigenValsVecsGetBufferSize_8u32f_C1R, 6>()), qeliEigenValsVecs_8u32f_C1R);
DIGESTS((Corners<qeliEigenValsVecsGetBufferSize_32f_C1R, 6>()), qeliEigenValsVecs_32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliMinEigenValGetBufferSize_8u32f_C1R,
              qeliMinEigenValGetBufferSize_32f_C1R, qeliEigenValsVecsGetBufferSize_8u32f_C1R,
              qeliEigenValsVecsGetBufferSize_32f_C1R);
