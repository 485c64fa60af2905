#include "digests/digest.h"
#include "qelcv/morph.h"

namespace {

template <auto query>
struct FourAndEight {
    template <class T>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const T*, int, T*, int, QelSize, Qel8u*, int)) const {
        const auto src = c.input<T>();
        int bytes = 0;
        query(c.size(), &bytes);
        qelStatus status = qelStatusOk;
        for (const int norm : {qelMorphNormInf, qelMorphNormL1}) {
            const auto srcDst = c.output<T>();
            if (status == qelStatusOk) {
                status = function(src.data, src.step, srcDst.data, srcDst.step, c.size(), c.scratch(bytes), norm);
            }
        }
        return status;
    }
};

}  // namespace

DIGESTS(FourAndEight<qeliMorphReconstructGetBufferSize_8u_C1>(), qeliMorphReconstructDilate_8u_C1IR);
DIGESTS(FourAndEight<qeliMorphReconstructGetBufferSize_32f_C1>(), qeliMorphReconstructDilate_32f_C1IR);
DIGESTS(FourAndEight<qeliMorphReconstructGetBufferSize_8u_C1>(), qeliMorphReconstructErode_8u_C1IR);
DIGESTS(FourAndEight<qeliMorphReconstructGetBufferSize_32f_C1>(), qeliMorphReconstructErode_32f_C1IR);

DIGESTS_UNDER(({.sizeQuery = true}), digest::bySignature, qeliMorphReconstructGetBufferSize_8u_C1,
              qeliMorphReconstructGetBufferSize_32f_C1);
