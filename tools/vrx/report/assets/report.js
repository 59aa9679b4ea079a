// The script of a report: tables that sort, filter and turn pages, and the marking of a trial in the pictures. Everything it
// shows comes from the page's data, as text and never as HTML.
'use strict';
(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const texts = data.texts;
  const svgNamespace = 'http://www.w3.org/2000/svg';
  const shownAtOnce = 300;  // rows up to which a table needs no pages

  const element = (name, properties = {}, ...children) => {
    const made = Object.assign(document.createElement(name), properties);
    made.append(...children);
    return made;
  };
  const filled = (pattern, ...values) => pattern.replace(/%s/g, () => values.shift() ?? '');
  const isNumber = (value) => typeof value === 'number';
  const isolated = (text) => element('bdi', {}, text);
  const verdictClasses = ['fail', 'warning', 'pass'];
  const verdict = (value) =>
    element('span', { className: `verdict ${verdictClasses[value]}` }, texts.verdicts[value]);
  const fixed = (value, decimals) =>
    value === null ? '-' : isNumber(value) ? value.toFixed(decimals) : value;

  // "#rrggbb#rrggbb", and "*" where the display cannot show one of them.
  const splitColours = (text) => ({ first: text.slice(0, 7), second: text.slice(7, 14), clipped: text.length > 14 });
  const swatches = (text) => {
    const { first, second, clipped } = splitColours(text);
    const both = element('span', { className: 'swatches' }, element('span'), element('span'));
    both.setAttribute('role', 'img');
    both.setAttribute('aria-label', `${first} | ${second}${clipped ? ', ' + texts.gamut : ''}`);
    both.children[0].style.background = first;
    both.children[1].style.background = second;
    return clipped ? [both, '*'] : [both];
  };

  class Table {
    constructor(root, { columns, rows }, pick) {
      Object.assign(this, { root, columns, rows, pick, page: 0, sorted: -1, descending: false, picked: -1 });
      this.body = root.querySelector('tbody');
      this.status = root.querySelector('.status');
      this.pageSize = rows.length <= shownAtOnce ? rows.length : 100;
      const isText = columns.map(({ kind }) => ['text', 'words', 'name', 'choice'].includes(kind));
      this.searchable = rows.map((row) => row.filter((_, c) => isText[c]).join('\n').toLowerCase());
      this.choices = new Map();
      this.order = rows.map((_, i) => i);
      this.makeHeadings();
      this.makeControls();
      this.show();
      // Paper has every row that the filter lets through, whatever page is on the screen.
      addEventListener('beforeprint', () => this.show(true));
      addEventListener('afterprint', () => this.show());
    }

    makeHeadings() {
      this.headings = [...this.root.querySelectorAll('thead th')];
      this.headings.forEach((heading, c) => {
        const { kind } = this.columns[c];
        if (kind === 'number') heading.classList.add('number');
        if (kind === 'colours') return;
        const button = element('button', { type: 'button' }, heading.textContent);
        button.addEventListener('click', () => this.sortBy(c));
        heading.replaceChildren(button);
      });
    }

    makeControls() {
      const controls = this.root.querySelector('.controls');
      const labelled = (text, control) => controls.append(element('label', {}, text, control));
      this.search = element('input', { type: 'search' });
      this.search.addEventListener('input', () => this.filter());
      labelled(texts.search, this.search);
      this.columns.forEach(({ kind, heading }, c) => {
        if (kind === 'choice') this.addChoice(controls, heading, c, [...new Set(this.rows.map((row) => row[c]))], (v) => v);
        if (kind === 'verdict') this.addChoice(controls, heading, c, [0, 1, 2], (v) => texts.verdicts[v]);
      });
      if (this.rows.length > 50) {
        const sizes = [...new Set([25, 50, 100, 300, this.pageSize])].sort((a, b) => a - b);
        const select = element('select', {}, ...sizes.map((n) => new Option(n, n, false, n === this.pageSize)));
        select.addEventListener('change', () => {
          this.pageSize = Number(select.value);
          this.page = 0;
          this.show();
        });
        labelled(texts.shown, select);
      }
    }

    addChoice(controls, heading, column, values, nameOf) {
      if (values.length < 2) return;
      const select = element('select', {}, new Option(texts.all, ''), ...values.map((v, i) => new Option(nameOf(v), i)));
      select.addEventListener('change', () => {
        if (select.value === '') this.choices.delete(column);
        else this.choices.set(column, values[Number(select.value)]);
        this.filter();
      });
      controls.append(element('label', {}, heading, select));
    }

    filter() {
      const words = this.search.value.toLowerCase().split(/\s+/).filter(Boolean);
      this.order = [];
      this.rows.forEach((row, i) => {
        if (!words.every((word) => this.searchable[i].includes(word))) return;
        for (const [column, value] of this.choices) if (row[column] !== value) return;
        this.order.push(i);
      });
      this.sort();
      this.page = 0;
      this.show();
    }

    sortBy(column) {
      this.descending = this.sorted === column ? !this.descending : this.columns[column].kind === 'number';
      this.sorted = column;
      this.headings.forEach((heading, c) => {
        if (c === column) heading.setAttribute('aria-sort', this.descending ? 'descending' : 'ascending');
        else heading.removeAttribute('aria-sort');
      });
      this.sort();
      this.page = 0;
      this.show();
    }

    // Numbers by size, texts as people sort them ("P2" before "P10"), what is missing at the end; equal ones keep their order.
    sort() {
      if (this.sorted < 0) return;
      const collator = new Intl.Collator(undefined, { numeric: true });
      const sign = this.descending ? -1 : 1;
      const keyOf = (i) => this.rows[i][this.sorted];
      this.order.sort((i, j) => {
        const a = keyOf(i), b = keyOf(j);
        if (a === null || b === null) return (a === null) - (b === null) || i - j;
        const difference = isNumber(a) && isNumber(b) ? a - b : collator.compare(a, b);
        return sign * difference || i - j;
      });
    }

    // How the number looks that the row's verdict comes from: the reason begins with its heading.
    markOf(c, row) {
      const [reason, verdict] = ['reason', 'verdict'].map((kind) => this.columns.findIndex((column) => column.kind === kind));
      const isReason = reason >= 0 && (this.rows[row][reason] ?? '').startsWith(`${this.columns[c].heading} `);
      return !isReason ? '' : this.rows[row][verdict] === 0 ? ' broken' : ' near';
    }

    cell(value, c, row) {
      const { kind, decimals } = this.columns[c];
      const cell = element('td');
      if (kind === 'verdict') cell.append(verdict(value));
      else if (kind === 'colours') cell.append(...swatches(value));
      else if (kind === 'name' && this.pick) {
        const button = element('button', { type: 'button', className: 'name' }, isolated(value));
        button.addEventListener('click', () => this.pick(row));
        cell.append(button);
      } else if (kind === 'number') {
        cell.className = `number${this.markOf(c, row)}`;
        cell.textContent = fixed(value, decimals);
      } else {
        if (kind === 'words' || kind === 'reason') cell.className = 'words';
        cell.append(isolated(value ?? '-'));
      }
      return cell;
    }

    show(isWhole = false) {
      const from = isWhole ? 0 : this.page * this.pageSize;
      const visible = isWhole ? this.order : this.order.slice(from, from + this.pageSize);
      this.body.replaceChildren(...visible.map((i) => {
        const row = element('tr', {}, ...this.rows[i].map((value, c) => this.cell(value, c, i)));
        if (this.picked === i) row.className = 'picked';
        return row;
      }));
      this.showStatus(from, visible.length);
    }

    showStatus(from, count) {
      if (count === 0) return this.status.replaceChildren(texts.none);
      const turn = (text, step, isPossible) => {
        const button = element('button', { type: 'button', disabled: !isPossible }, text);
        button.addEventListener('click', () => this.turn(step));
        return button;
      };
      const parts = [element('span', {}, filled(texts.rows, from + 1, from + count, this.order.length))];
      if (this.order.length < this.rows.length) parts.push(element('span', {}, filled(texts.filtered, this.order.length, this.rows.length)));
      if (this.order.length > this.pageSize) {
        parts.unshift(turn(texts.previous, -1, from > 0));
        parts.push(turn(texts.next, 1, from + count < this.order.length));
      }
      this.status.replaceChildren(...parts);
    }

    // Turns the page. The focus stays on the button, or goes to the other one at the end.
    turn(step) {
      this.page += step;
      this.show();
      this.root.querySelector('.scroll').scrollTop = 0;
      const [previous, next] = this.status.querySelectorAll('button');
      const [same, other] = step > 0 ? [next, previous] : [previous, next];
      (same.disabled ? other : same).focus();
    }

    // Turns to a row, if the filter lets it through.
    reveal(row) {
      this.picked = row;
      const place = this.order.indexOf(row);
      if (place >= 0) this.page = Math.floor(place / this.pageSize);
      this.show();
    }
  }

  // Pictures ---------------------------------------------------------------------------------------------------------

  // Pairs of scales of a figure: from a value to a place in the picture.
  const scalesOf = (figure) => {
    const [kind, ...numbers] = figure.dataset.scales.split('|');
    const pairs = [];
    for (let i = 0; i + 3 < numbers.length; i += 4) {
      const [x0, xUnit, y0, yUnit] = numbers.slice(i, i + 4).map(Number);
      pairs.push({ x: (v) => x0 + xUnit * v, y: (v) => y0 + yUnit * v, order: (x) => Math.round((x - x0) / xUnit) });
    }
    return { kind, pairs };
  };
  const drawn = (parent, name, className, attributes) => {
    const made = document.createElementNS(svgNamespace, name);
    made.setAttribute('class', className);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    parent.append(made);
  };

  class Pictures {
    constructor(table) {
      this.table = table;
      this.perTrial = data.illuminants;
      this.trialsOf = new Map();  // by view, in their order
      data.trials.forEach(([view], t) => {
        if (!this.trialsOf.has(view)) this.trialsOf.set(view, []);
        this.trialsOf.get(view).push(t);
      });
      this.hint = element('div', { id: 'hint', hidden: true });
      document.body.append(this.hint);
      for (const figure of document.querySelectorAll('.chart[data-view], .chart[data-all]')) this.watch(figure);
    }

    row(trial, illuminant) { return this.table.rows[trial * this.perTrial + illuminant]; }
    total(trial, illuminant) { return this.row(trial, illuminant)[data.places.total]; }
    trialsIn(figure) {
      return 'all' in figure.dataset ? data.trials.map((_, t) => t) : this.trialsOf.get(Number(figure.dataset.view)) ?? [];
    }

    // The places of trials in a trend: their order, or with several geometries that of their samples.
    ordersIn(figure, trials) {
      return 'all' in figure.dataset && data.orders ? data.orders : trials.map((_, k) => k + 1);
    }

    // The trial nearest to a point of a figure, and under which illuminant; null when none is near.
    nearest(figure, x, y) {
      const { kind, pairs } = scalesOf(figure);
      let best = null, least = 10 * 10;
      const offer = (trial, illuminant, px, py) => {
        const distance = (px - x) ** 2 + (py - y) ** 2;
        if (distance < least) [best, least] = [{ trial, illuminant }, distance];
      };
      const trials = this.trialsIn(figure);
      if (kind === 'plane') {
        const illuminant = Number(figure.dataset.illuminant);
        for (const t of trials) {
          const [dx, dy] = (data.trials[t][1] ?? []).slice(3 * illuminant);
          if (isNumber(dx) && isNumber(dy)) offer(t, illuminant, pairs[0].x(dx), pairs[0].y(dy));
        }
      } else if (kind === 'trend') {
        const orders = this.ordersIn(figure, trials);
        pairs.forEach((pair, illuminant) => {
          const middle = pair.order(x);
          const reach = Math.ceil(10 / Math.abs(pair.x(1) - pair.x(0)));
          trials.forEach((t, k) => {
            const total = this.total(t, illuminant);
            if (Math.abs(orders[k] - middle) <= reach && isNumber(total)) offer(t, illuminant, pair.x(orders[k]), pair.y(total));
          });
        });
      }
      return best;
    }

    watch(figure) {
      const svg = figure.querySelector('svg');
      const at = (event) => {
        const box = svg.getBoundingClientRect(), view = svg.viewBox.baseVal;
        return this.nearest(figure, (event.clientX - box.left) * view.width / box.width,
          (event.clientY - box.top) * view.height / box.height);
      };
      svg.addEventListener('mousemove', (event) => {
        const found = at(event);
        this.hint.hidden = !found;
        svg.style.cursor = found ? 'pointer' : '';
        if (!found) return;
        const row = this.row(found.trial, found.illuminant);
        const { heading, decimals } = this.table.columns[data.places.total];
        this.hint.replaceChildren(isolated(row[0]), ` ${heading} ${fixed(row[data.places.total], decimals)} `,
          texts.verdicts[row[data.places.verdict]]);
        this.hint.style.left = `${Math.min(event.clientX + 14, innerWidth - this.hint.offsetWidth - 4)}px`;
        this.hint.style.top = `${event.clientY + 14}px`;
      });
      svg.addEventListener('mouseleave', () => { this.hint.hidden = true; });
      svg.addEventListener('click', (event) => {
        const found = at(event);
        if (found) this.choose(found.trial * this.perTrial + found.illuminant, false);
      });
    }

    // Marks the trial of a row in every picture that has it.
    choose(row, goThere = true) {
      const trial = Math.floor(row / this.perTrial);
      const [view] = data.trials[trial];
      this.table.reveal(row);
      for (const group of document.querySelectorAll('g.picked')) group.remove();
      for (const figure of document.querySelectorAll(`.chart[data-view="${view}"], .chart[data-all]`)) this.mark(figure, trial);
      this.showPair(view, trial);
      const section = document.getElementById(`view${view}`)?.closest('section');
      if (!goThere || !section) return;
      const heading = section.querySelector('h2');
      heading.focus({ preventScroll: true });
      document.getElementById(`view${view}`).scrollIntoView({ block: 'nearest' });
      section.scrollIntoView();
    }

    mark(figure, trial) {
      const { kind, pairs } = scalesOf(figure);
      const [, points, curve] = data.trials[trial];
      const group = document.createElementNS(svgNamespace, 'g');
      group.setAttribute('class', 'picked');
      const circle = (pair, x, y) => {
        if (isNumber(x) && isNumber(y)) drawn(group, 'circle', 'mark', { cx: pair.x(x), cy: pair.y(y), r: 8 });
      };
      if (kind === 'trend') {
        const trials = this.trialsIn(figure), order = this.ordersIn(figure, trials)[trials.indexOf(trial)];
        pairs.forEach((pair, i) => circle(pair, order, this.total(trial, i)));
      } else if (kind === 'plane' && points) {
        const [x, y, lightness] = points.slice(3 * Number(figure.dataset.illuminant));
        circle(pairs[0], x, y);
        circle(pairs[1], 0.5, lightness);
      } else if (kind === 'profile') {
        const totals = Array.from({ length: this.perTrial }, (_, i) => [i, this.total(trial, i)]).filter(([, total]) => isNumber(total));
        drawn(group, 'polyline', 'mark-line', { points: totals.map(([i, total]) => `${pairs[0].x(i)},${pairs[0].y(total)}`).join(' ') });
      } else if (kind === 'curves' && curve) this.markCurve(figure, group, curve, pairs);
      figure.querySelector('svg').append(group);
    }

    markCurve(figure, group, curve, pairs) {
      const standard = data.standards[figure.dataset.view];
      const [first, last] = data.samples;
      [curve, curve.map((value, i) => value - standard[i])].forEach((values, k) => {
        const points = values.slice(first, last + 1).map((value, i) => `${pairs[k].x(360 + 10 * (first + i))},${pairs[k].y(value)}`);
        drawn(group, 'polyline', 'mark-line', { points: points.join(' ') });
      });
    }

    showPair(view, trial) {
      const pairs = document.querySelector(`.pairs[data-view="${view}"]`);
      if (!pairs) return;
      pairs.querySelector('.shown').replaceChildren(element('b', {}, isolated(this.row(trial, 0)[0])));
      for (const figure of pairs.querySelectorAll('.pair')) {
        const row = this.row(trial, Number(figure.dataset.illuminant));
        const caption = figure.querySelector('figcaption');
        figure.replaceChildren(...swatches(row[data.places.colours]), caption);
        caption.querySelector('.total').textContent = fixed(row[data.places.total], 2);
        caption.querySelector('.verdict').replaceWith(verdict(row[data.places.verdict]));
        caption.querySelector('.words').textContent = row[data.places.words];
        const colours = data.tables[1].rows[trial * this.perTrial + Number(figure.dataset.illuminant)];
        const decimals = data.tables[1].columns.slice(data.trialLab).map((column) => column.decimals);
        const lab = colours.slice(data.trialLab).map((value, i) => fixed(value, decimals[i]));
        caption.querySelector('.lab').textContent = filled(texts.trialLab, ...lab);
      }
    }
  }

  let pictures = null;
  const tables = [...document.querySelectorAll('.table')].map((root, i) =>
    new Table(root, data.tables[i], data.trials && i === 0 ? (row) => pictures.choose(row) : null));
  if (data.trials) pictures = new Pictures(tables[0]);
})();
