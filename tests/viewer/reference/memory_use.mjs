// SPDX-License-Identifier: Apache-2.0
// What each memory carried when, as steps at the borders of all samples.

export class Steps {
    constructor() {
        this.borders = [];
    }

    /** Spreads bytes evenly over an interval. */
    add(from, to, bytes) {
        if (to > from && bytes > 0) this.borders.push([from, bytes / (to - from)], [to, -bytes / (to - from)]);
    }

    /** Sorts, and sums up: the bytes from the start to each border. */
    finish() {
        this.borders.sort((a, b) => a[0] - b[0]);
        this.times = [];
        this.bytes = [];
        this.rates = [];
        let rate = 0;
        let sum = 0;
        let last = this.borders[0]?.[0] ?? 0;
        for (const [time, change] of this.borders) {
            if (time !== last || this.times.length === 0) {
                sum += rate * (time - last);
                this.times.push(time);
                this.bytes.push(sum);
                this.rates.push(rate);
                last = time;
            }
            rate += change;
            this.rates[this.rates.length - 1] = rate;
        }
        return this;
    }

    bytes_until(time) {
        let low = 0;
        let high = this.times.length;
        while (low < high) {
            const middle = (low + high) >>> 1;
            if (this.times[middle] > time) high = middle;
            else low = middle + 1;
        }
        return low === 0 ? 0 : this.bytes[low - 1] + Math.max(0, this.rates[low - 1]) * (time - this.times[low - 1]);
    }

    bytes_in(from, to) {
        return this.bytes_until(to) - this.bytes_until(from);
    }

    greatest_rate() {
        return this.rates.reduce((most, rate) => Math.max(most, rate), 0);
    }

    /** The length in which the rate is at least so high. */
    time_at_least(rate) {
        let time = 0;
        for (let i = 0; i + 1 < this.times.length; ++i) if (this.rates[i] >= rate) time += this.times[i + 1] - this.times[i];
        return time;
    }
}
