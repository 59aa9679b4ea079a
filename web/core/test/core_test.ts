// The package as it is installed, in the hands of a program with types.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { load, type SystemName, VrxError } from '@vrxmath/core';

const vrx = await load();
const examples = process.env['VRX_EXAMPLES']!;
const file = (name: string) => readFileSync(join(examples, name));
const near = (got: number, expected: number, tolerance: number) => assert.ok(Math.abs(got - expected) <= tolerance, `${got}, not ${expected}`);

test('published white points are the perfect white', () => {
  // ASTM E308, table 5.
  const whites: [string, 2 | 10, number[]][] = [['D65', 10, [94.811, 100, 107.304]], ['D65', 2, [95.047, 100, 108.883]], ['A', 10, [111.144, 100, 35.2]]];
  for (const [illuminant, observer, xyz] of whites) {
    vrx.tristimulus(new Float64Array(40).fill(100), illuminant, observer).forEach((got, i) => near(got, xyz[i]!, 0.006));
  }
  vrx.lab([94.811, 100, 107.304], 'D65').slice(0, 3).forEach((got, i) => near(got, [100, 0, 0][i]!, 1e-9));
  assert.deepEqual([...vrx.displayRgb([94.811, 100, 107.304], 'D65')], [255, 255, 255]);
});

test('CIEDE2000 of published pairs', () => {
  // G. Sharma, W. Wu, E. Dalal, Color Research and Application 30 (2005), table 1.
  const pairs: [number[], number[], number][] = [
    [[50, 2.6772, -79.7751], [50, 0, -82.7485], 2.0425], [[50, -1.3802, -84.2814], [50, 0, -82.7485], 1], [[50, 2.5, 0], [50, 0, -2.5], 4.3065],
    [[60.2574, -34.0099, 36.2677], [60.4626, -34.1751, 39.4387], 1.2644], [[2.0776, 0.0795, -1.135], [0.9033, -0.0636, -0.5514], 0.9082],
  ];
  const xyz = (side: 0 | 1) => vrx.xyz(pairs.flatMap((pair) => pair[side]), 'D65');
  const delta = vrx.delta(xyz(0), xyz(1), { system: 'cie2000' });
  pairs.forEach(([, , total], i) => near(delta[7 * i + 6]!, total, 5e-5));
});

test('files are read and judged as the tool does it', () => {
  const [ohta, average] = ['chart_ohta.csv', 'chart_average.csv'].map((name) => vrx.read(file(name), { name }));
  assert.deepEqual([ohta!.count, ohta!.form, ohta!.ids[23]], [24, 'csv', 'P24']);
  const judged = vrx.judge(ohta!.curves!, average!.curves!);
  const options = ['judge', 'chart_ohta.csv', 'chart_average.csv', '--pairs', '--format', 'csv'];
  const [, ...rows] = execFileSync(process.env['VRX_TOOL']!, options, { cwd: examples, encoding: 'utf8' }).trim().split('\n').map((line) => line.split(','));
  const totals = judged.flatMap(({ under }) => under.map(({ illuminant, total, verdict, words }) => [illuminant, String(total), verdict, ...words]));
  assert.deepEqual(totals, rows.map((row) => [row[3], row[11], row[17], ...row.slice(12, 15).filter((word) => word.trim() !== '')]));
});

test('indices have their names; one that is not defined is left out', () => {
  const white = vrx.indices([94.811, 100, 107.304], 'D65');
  near(white.find(({ name }) => name === 'Whiteness: CIE')!.values[0]!, 100, 0.01); // CIE 15: 100 for the perfect white
  assert.ok(vrx.indices([94.811, 100, 107.304], 'CWF').length < white.length);
});

test('what cannot be used is refused with the reason', () => {
  const curve = new Float64Array(40).fill(50);
  const refusals: [() => unknown, RegExp][] = [
    [() => vrx.tristimulus(curve, 'D66'), /D66|illuminant/], [() => vrx.tristimulus(new Float64Array(39), 'D65'), /39 numbers/],
    [() => vrx.delta([1, 2, 3], [1, 2, 3], { system: 'none' as SystemName }), /"none"/], [() => vrx.tristimulus(curve.map(() => Infinity), 'D65'), /finite/],
    [() => vrx.judge(curve, curve, { warning: 2 }), /warning/], [() => vrx.judge(curve, curve, { tolerance: [1, 2] }), /one number or seven/],
    [() => vrx.read('id,400,500\na,1,x\n', { name: 'bad.csv' }), /bad\.csv/], [() => vrx.read(''), /empty/],
  ];
  for (const [call, reason] of refusals) assert.throws(call, (error) => error instanceof VrxError && reason.test(error.message), String(reason));
});

test('unset values are NaN on both ways', () => {
  assert.ok(vrx.tristimulus(new Float64Array(40).fill(NaN), 'D65').every(Number.isNaN));
});
