#!/usr/bin/env python3
"""The estimate of laps, written a second time for comparison, and the answers that the tests expect.

    make_reference.py random > random.txt              200 random events
    make_reference.py ANALYSES.json > NAME.txt         an event, from keltrun2 analyze --all --as json

This is the method of docs/analysis.md in the order of its formulas, whole columns at a time; the
library goes lap by lap and takes its special function from a table. The random events come from a
small generator that the test has, too, so the files have only answers: those of a sample of laps,
runners and legs. Needs numpy.
"""
import json
import math
import sys

import numpy as np

ITERATIONS, POOL_AT = 6, (2, 4)
SIGMA0, NU_EVENT, NU_CLASS, NU_RUNNER, NU_LEG, SIGMA_MIN = 0.085, 20.0, 20.0, 8.0, 8.0, 0.02
PI0, A_PI, LAMBDA0, A_LAMBDA, A_LEG_RATE = 0.20, 20.0, 0.25, 50.0, 4.0
ROUNDING = 0.3
TAU0, TAU_MIN, TAU_LEGS, T_DF = 0.05, 0.02, 10.0, 4.0
FAST_LIMIT, W_MIN = 2.5, 1e-4
Z90 = 1.6448536269514722
TOTAL_DEVIATIONS = 2.5
SECONDS = 20.0
TAU_LIMIT = 0.5
HALF_LOG_2PI = 0.5 * math.log(2 * math.pi)

_erfc = np.vectorize(math.erfc, otypes=[float])


def log_ndtr(z):
    """The logarithm of the normal distribution function; an asymptotic series below -8."""
    z = np.asarray(z, float)
    far = np.minimum(z, -8.0)
    i2 = 1 / (far * far)
    tail = (-0.5 * far * far - np.log(-far) - HALF_LOG_2PI +
            np.log1p(i2 * (-1 + i2 * (3 - 15 * i2))))
    body = np.log(np.maximum(0.5 * _erfc(-np.maximum(z, -8.0) / math.sqrt(2)), 1e-300))
    return np.where(z < -8.0, tail, body)


def inverse_mills(u):
    return np.exp(-0.5 * u * u - HALF_LOG_2PI - log_ndtr(u))


def low(values, p):
    v = np.sort(values)
    return v[int(p * (len(v) - 1) + 0.5)] if len(v) else 0.0


class Event:
    """The laps of classes, each a pair of an array (runners x legs, nan = none) and pair keys."""

    def __init__(self, classes):
        x, r, l, c, keys, class_of_leg, class_of_runner = [], [], [], [], [], [], []
        self.first_runner, self.first_leg = [], []
        self.nr = self.nl = 0
        for ci, (laps, pairs) in enumerate(classes):
            self.first_runner.append(self.nr)
            self.first_leg.append(self.nl)
            i, j = np.nonzero(np.isfinite(laps) & (laps > 0))
            x.append(np.log(laps[i, j]))
            r.append(i + self.nr)
            l.append(j + self.nl)
            c.append(np.full(len(i), ci))
            keys += list(pairs)
            class_of_leg += [ci] * laps.shape[1]
            class_of_runner += [ci] * laps.shape[0]
            self.nr += laps.shape[0]
            self.nl += laps.shape[1]
        self.x, self.r, self.l, self.c = map(np.concatenate, (x, r, l, c))
        self.nc = len(classes)
        ids = {}
        self.pair = np.array([ids.setdefault(k, len(ids)) for k in keys], int)
        self.np = len(ids)
        self.class_of_leg = np.array(class_of_leg, int)
        self.class_of_runner = np.array(class_of_runner, int)


def start_values(E):
    s, b = np.zeros(E.nr), np.zeros(E.nl)
    legs = [np.nonzero(E.l == j)[0] for j in range(E.nl)]
    runs = [np.nonzero(E.r == i)[0] for i in range(E.nr)]
    for j, k in enumerate(legs):
        b[j] = low(E.x[k], 0.35)
    for i, k in enumerate(runs):
        s[i] = low(E.x[k] - b[E.l[k]], 0.4)
    for j, k in enumerate(legs):
        b[j] = low(E.x[k] - s[E.r[k]], 0.4)
    return s, b


def pool(E, bhat, prec):
    """Mean and variance that the other classes give for each leg; inf = nothing known."""
    f, t2 = np.zeros(E.nc), TAU0 ** 2
    m, v, down = np.zeros(E.nl), np.full(E.nl, np.inf), np.ones(E.nl)
    legs = [np.nonzero(E.class_of_leg == c)[0] for c in range(E.nc)]
    for _ in range(4):
        q = np.where(prec > 0, down / (1 / np.maximum(prec, 1e-12) + t2), 0.0)
        Q = np.bincount(E.pair, q, E.np)
        S = np.bincount(E.pair, q * (bhat - f[E.class_of_leg]), E.np)
        for c in range(E.nc):
            j = legs[c]
            p = E.pair[j]
            np.subtract.at(S, p, q[j] * (bhat[j] - f[c]))
            Qo = Q.copy()
            np.subtract.at(Qo, p, q[j])
            Qo = Qo[p]
            has = Qo > 1e-9
            other = np.where(has, S[p] / np.where(has, Qo, 1), 0.0)
            both = has & (q[j] > 0)
            w = np.where(both, 1 / (1 / np.maximum(q[j], 1e-12) + 1 / np.where(has, Qo, 1)), 0.0)
            d = np.where(both, bhat[j] - other, 0.0)
            W, D = w.sum(), (w * d).sum()
            if W > 0:
                f[c] = D / W
            Wj = W - w
            ok = has & (Wj > 1e-9)
            m[j] = np.where(ok, np.where(ok, D - w * d, 0) / np.where(ok, Wj, 1) + other, 0.0)
            v[j] = np.where(ok, t2 + 1 / np.where(has, Qo, 1) + 1 / np.where(ok, Wj, 1), np.inf)
            np.add.at(S, p, q[j] * (bhat[j] - f[c]))
        k = np.isfinite(v) & (prec > 0)
        if k.any():
            d2 = (bhat[k] - m[k]) ** 2
            known = v[k] - t2 + 1 / prec[k]
            for _ in range(3):
                a = 1 / (known + t2) ** 2
                a0 = TAU_LEGS * np.median(a)
                excess = (a * (np.minimum(d2, 9 * (known + t2)) - known)).sum()
                t2 = max(TAU_MIN ** 2, (excess + a0 * TAU0 ** 2) / (a.sum() + a0))
            down = np.ones(E.nl)
            down[k] = np.minimum(1, (T_DF + 1) / (T_DF + d2 / (known + t2)))
    return m, np.where(np.isfinite(v), v / np.maximum(down, 1e-6), np.inf)


def estimate(classes):
    E = Event(classes)
    bc, x, r, l, c = np.bincount, E.x, E.r, E.l, E.c
    s, b = start_values(E)
    s0, g = np.full(E.nr, SIGMA0), np.ones(E.nl)
    pi, lam = np.full(E.nc, PI0), np.full(E.nc, LAMBDA0)
    rate, pcell = np.ones(E.nl), pi[c]
    m, iv = np.zeros(E.nl), np.zeros(E.nl)
    in_class, in_leg = bc(c, minlength=E.nc), bc(l, minlength=E.nl)

    def rounding2():
        return (ROUNDING * np.exp(-(s[r] + b[l]))) ** 2

    for it in range(ITERATIONS):
        e = x - s[r] - b[l]
        sg = np.sqrt((s0[r] * g[l]) ** 2 + rounding2())
        u = e / sg - sg / lam[c]
        a = inverse_mills(u)
        clean = a / (a + pcell / (1 - pcell) * sg / lam[c])
        size = sg * np.maximum(u + a, 0.0)
        w = np.maximum(clean * np.minimum(1, FAST_LIMIT * sg / np.maximum(-e, 1e-9)) ** 2, W_MIN)
        k = w / sg ** 2
        W, num = bc(l, k, E.nl), bc(l, k * (x - s[r]), E.nl)
        if E.nc > 1 and it in POOL_AT:
            m, v = pool(E, np.where(W > 0, num / np.maximum(W, 1e-12), b), W)
            iv = np.where(np.isfinite(v), 1 / v, 0.0)
        b = np.where(W + iv > 0, (num + iv * m) / np.maximum(W + iv, 1e-12), b)
        V = bc(r, k, E.nr)
        s = np.where(V > 0, bc(r, k * (x - b[l]), E.nr) / np.maximum(V, 1e-12), s)
        e = x - s[r] - b[l]
        if it >= 1:
            h = np.minimum(0.9, k / (W + iv)[l] + k / V[r])
            n = w * (1 - h)
            q = w * e * e
            z = q / g[l] ** 2
            s2_event = (NU_EVENT * SIGMA0 ** 2 + q.sum()) / (NU_EVENT + n.sum())
            s2_class = np.maximum((NU_CLASS * s2_event + bc(c, z, E.nc)) /
                                  (NU_CLASS + bc(c, n, E.nc)), SIGMA_MIN ** 2)
            Zr = NU_RUNNER * s2_class[E.class_of_runner] + bc(r, z, E.nr)
            Nr = NU_RUNNER + bc(r, n, E.nr)
            s0 = np.sqrt(Zr / Nr)
            y2 = q / s0[r] ** 2
            Zl, Nl = NU_LEG + bc(l, y2, E.nl), NU_LEG + bc(l, n, E.nl)
            g = np.sqrt(Zl / Nl)
        if it >= 2:
            mis = 1 - clean
            count, total = mis.sum(), (mis * size).sum()
            pe = (A_PI * PI0 + count) / (A_PI + len(x))
            le = (A_LAMBDA * LAMBDA0 + total) / (A_LAMBDA + count)
            mc = bc(c, mis, E.nc)
            pi = np.clip((A_PI * pe + mc) / (A_PI + in_class), 0.01, 0.6)
            lam = np.clip((A_LAMBDA * le + bc(c, mis * size, E.nc)) / (A_LAMBDA + mc), 0.08, 1.0)
            rate = (A_LEG_RATE + bc(l, mis, E.nl)) / (A_LEG_RATE + pi[E.class_of_leg] * in_leg)
            odds = pi[c] / (1 - pi[c]) * rate[l]
            pcell = np.clip(odds / (1 + odds), 0.005, 0.8)

    # Every lap compared with what the other laps say.
    k = w / ((s0[r] * g[l]) ** 2 + rounding2())
    W, V = bc(l, k, E.nl) + iv, bc(r, k, E.nr)
    h = np.minimum(0.9, k / W[l] + k / V[r])
    e = (x - s[r] - b[l]) / (1 - h)
    own = (Zr[r] - z) / (Nr[r] - n) * (Zl[l] - y2) / (Nl[l] - n) + rounding2()
    tau = np.sqrt(own + 1 / np.maximum(W[l] - k, 1e-9) + 1 / np.maximum(V[r] - k, 1e-9))
    known = tau <= TAU_LIMIT

    y, lam_c, t = np.exp(x), lam[c], np.minimum(tau, 1.0)
    u = e / t - t / lam_c
    lu = log_ndtr(u)
    p = 1 / (1 + inverse_mills(u) / (pcell / (1 - pcell) * t / lam_c))
    lower = u + np.log(np.maximum(1 - SECONDS / y, 1e-12)) / t
    p20 = np.where(y > SECONDS, p * np.exp(log_ndtr(lower) - lu), 0.0)
    rest = np.exp(-e + t * t * (1 / lam_c + 0.5) + log_ndtr(u - t) - lu)
    lost = np.maximum(y * p * (1 - rest), 0)
    rest2 = np.exp(-2 * e + 2 * t * t * (1 / lam_c + 1) + log_ndtr(u - 2 * t) - lu)
    variance = np.maximum(y * y * p * (1 - 2 * rest + rest2) - lost ** 2, 0)
    normal = y * np.exp(-e)
    laps = dict(normal=normal, least=y - normal * np.exp(Z90 * t), most=y - normal * np.exp(-Z90 * t),
                p=p, p20=p20, lost=lost)
    flagged = (p20 > 0.5) & known
    # The three fastest runners of each class, of those with a lap.
    fastest = []
    for ci in range(E.nc):
        of_class = np.sort(s[(E.class_of_runner == ci) & (V > 0)])[:3]
        fastest.append(of_class.mean() if len(of_class) else 0.0)
    fastest = np.array(fastest)
    # The errors of the laps, and that of the speed, which all mistakes share.
    runners_of_class = bc(E.class_of_runner, V > 0, E.nc)[E.class_of_runner]
    total = bc(r, lost * known, E.nr)
    reach = (TOTAL_DEVIATIONS * np.sqrt(1 + 2 / np.maximum(runners_of_class, 1)) *
             np.sqrt(bc(r, variance * known, E.nr) +
                     bc(r, normal * p * known, E.nr) ** 2 / np.maximum(V, 1e-12)))
    with np.errstate(divide="ignore"):
        runners = dict(speed=np.exp(s - fastest[E.class_of_runner]), error=1 / np.sqrt(V), spread=s0,
                       mistakes=bc(r, flagged, E.nr), lost=total,
                       least=np.maximum(total - reach, 0), most=total + reach)
    legs = dict(normal=np.exp(b + fastest[E.class_of_leg]), spread=g, rate=rate)
    return E, dict(known=known, laps=laps, runners=runners, legs=legs, raced=V > 0, run=in_leg > 0)


class Random:
    """Numbers that the test makes in the same way (splitmix64)."""

    def __init__(self, seed):
        self.state = seed

    def bits(self):
        mask = (1 << 64) - 1
        self.state = (self.state + 0x9E3779B97F4A7C15) & mask
        z = self.state
        z = ((z ^ (z >> 30)) * 0xBF58476D1CE4E5B9) & mask
        z = ((z ^ (z >> 27)) * 0x94D049BB133111EB) & mask
        return z ^ (z >> 31)

    def uniform(self):
        return ((self.bits() >> 11) + 0.5) / 9007199254740992.0

    def normal(self):
        total = 0.0
        for _ in range(12):
            total += self.uniform()
        return total - 6.0

    def exponential(self):
        return -math.log(self.uniform())

    def below(self, count):
        return self.bits() % count


def random_event(seed):
    random, out, base = Random(seed), [], {}
    sizes = (1, 2, 3, 5, 10, 30, 80)
    for ci in range(1 + random.below(6)):
        runners, legs = sizes[random.below(7)], 2 + random.below(24)
        pairs, times = [], []
        for leg in range(legs):
            shared = random.uniform() < 0.4
            key = random.below(12) if shared else 1000 * (ci + 1) + leg
            if key not in base:
                base[key] = math.exp(4.9 + 0.6 * random.normal())
            pairs.append(key)
            times.append(base[key])
        laps = np.full((runners, legs), np.nan)
        center = 0.2 * random.normal()
        for i in range(runners):
            speed = center + 0.15 * random.normal()
            for leg in range(legs):
                noise = 0.09 * random.normal()
                if random.uniform() < 0.18:
                    noise += 0.35 * random.exponential()
                if random.uniform() >= 0.03:
                    lap = times[leg] * math.exp(speed + noise)
                    laps[i, leg] = max(math.floor(lap + 0.5), 1)
        out.append((laps, pairs))
    return in_pooling_order(out)


def in_pooling_order(classes):
    """Classes are pooled in turn, those with the most laps first."""
    return sorted(classes, key=lambda klass: (-np.isfinite(klass[0]).sum(), -np.nansum(klass[0])))


def untimed_legs(laps):
    """Legs on which at most half of those who have a lap on both neighbors have one."""
    ok = np.isfinite(laps) & (laps > 0)
    for leg in range(1, laps.shape[1] - 1):
        both = ok[:, leg - 1] & ok[:, leg + 1]
        if both.sum() >= 3 and (ok[:, leg] & both).sum() <= 0.5 * both.sum():
            yield leg


def event_of(path):
    """The classes of an event with their names and the numbers of their runners, from the JSON of
    all its analyses."""
    with open(path, encoding="utf-8") as file:
        analyses = json.load(file)
    classes = []
    for analysis in analyses:
        of = analysis["set"]
        if of["kind"] != "class" or not analysis["runners"]:
            continue
        legs = len(of["legLabels"])
        laps = np.full((len(analysis["runners"]), legs), np.nan)
        for i, runner in enumerate(analysis["runners"]):
            for leg, (time, valid) in enumerate(zip(runner["lap"], runner["validLap"])):
                if valid and not isinstance(time, (str, type(None))):
                    laps[i, leg] = time
        laps[:, list(untimed_legs(laps))] = np.nan
        places = ["S", *of["codes"], "F"] if of["codes"] and len(of["codes"]) == legs - 1 else None
        pairs = [(places[j], places[j + 1]) if places else (of["name"], j) for j in range(legs)]
        classes.append((laps, pairs, of["name"], [r["serial"] for r in analysis["runners"]]))
    return in_pooling_order(classes)


def number(value):
    return f"{value:.9g}"


def sampled(count, wanted):
    return range(0, count, max(1, count // wanted))


def print_answers(classes, wanted, class_name=str, runner_name=lambda klass, runner: runner):
    E, answers = estimate(classes)
    print("event", len(E.x), int(answers["known"].sum()))
    for i in sampled(len(E.x), wanted):
        klass = E.c[i]
        runner = runner_name(klass, E.r[i] - E.first_runner[klass])
        figures = [number(of[i]) for of in answers["laps"].values()]
        print("lap", class_name(klass), runner, E.l[i] - E.first_leg[klass],
              *(figures if answers["known"][i] else ["unknown"]))
    for i in sampled(E.nr, wanted // 4):
        if answers["raced"][i]:
            klass = E.class_of_runner[i]
            print("runner", class_name(klass), runner_name(klass, i - E.first_runner[klass]),
                  *(number(of[i]) for of in answers["runners"].values()))
    for i in sampled(E.nl, wanted // 4):
        if answers["run"][i]:
            klass = E.class_of_leg[i]
            print("leg", class_name(klass), i - E.first_leg[klass],
                  *(number(of[i]) for of in answers["legs"].values()))


def main():
    if sys.argv[1:] == ["random"]:
        for seed in range(1, 201):
            print_answers(random_event(seed), 20)
    elif len(sys.argv) == 2:
        classes = event_of(sys.argv[1])
        print_answers([klass[:2] for klass in classes], 600,
                      lambda klass: classes[klass][2].replace(" ", "_"),
                      lambda klass, runner: classes[klass][3][runner])
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main()
