#include <qelcv.h>
#include <stdio.h>

int main(void) {
    const Qel8u before[2][4] = {{10, 20, 30, 40}, {50, 60, 70, 80}};
    const Qel8u after[2][4] = {{10, 25, 30, 0}, {50, 60, 75, 80}};
    Qel8u change[2][4];
    const QelSize size = {4, 2};
    const qelStatus status = qeliAbsDiff_8u_C1R(before[0], 4, after[0], 4, change[0], 4, size);
    printf("status %d, changes %d %d %d\n", status, change[0][1], change[0][3], change[1][2]);
    return status;
}
